#define VESK_LANES 4
#define VESK_KERNELS avx2Kernels
#include <vesk/kernels/internal/KernelBodies.h>
