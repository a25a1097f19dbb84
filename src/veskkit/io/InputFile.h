#ifndef VESK_VESKKIT_IO_INPUTFILE_H
#define VESK_VESKKIT_IO_INPUTFILE_H

#include <fstream>
#include <string>

namespace Vesk::Kit {

/// Opens a file, device or pipe for reading. InputError "<path>: <reason>" for a directory and for
/// what is missing or may not be read.
std::ifstream openInput(const std::string& path);

}  // namespace Vesk::Kit

#endif
