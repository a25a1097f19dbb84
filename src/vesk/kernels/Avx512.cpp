#define VESK_LANES 8
#define VESK_KERNELS avx512Kernels
#include <vesk/kernels/internal/KernelBodies.h>
