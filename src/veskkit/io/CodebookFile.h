#ifndef VESK_VESKKIT_IO_CODEBOOKFILE_H
#define VESK_VESKKIT_IO_CODEBOOKFILE_H

#include <string>
#include <vector>

namespace Vesk::Kit {

/// The library's codebook file (docs/formats.md): a direction in degrees a line, six significant
/// digits, no line end after the last.
std::string codebookText(const std::vector<double>& codebook);

/// Reads a codebook file. InputError "<path>:<line>: ..." for a line that is no direction of at
/// least 0 and less than 360 degrees, or one that was there before, and for fewer than 2 or more
/// than 360 of them. White space around numbers and blank lines at the end count for nothing.
std::vector<double> loadCodebook(const std::string& path);

}  // namespace Vesk::Kit

#endif
