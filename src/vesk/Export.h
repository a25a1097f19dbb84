#ifndef VESK_EXPORT_H
#define VESK_EXPORT_H

/// Marks what the shared objects export; everything else in them is hidden.
#define VESK_API __attribute__((visibility("default")))

#endif
