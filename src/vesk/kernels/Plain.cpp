#define VESK_LANES 1
#define VESK_KERNELS plainKernels
#include <vesk/kernels/internal/KernelBodies.h>
