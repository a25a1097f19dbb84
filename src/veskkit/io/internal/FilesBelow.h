#ifndef VESK_VESKKIT_IO_INTERNAL_FILESBELOW_H
#define VESK_VESKKIT_IO_INTERNAL_FILESBELOW_H

#include <string>
#include <vector>

namespace Vesk::Kit::internal {

/// The paths of the regular files in a folder and below it, in order. Hidden files and folders are
/// left out; links to files are files, links to folders in it are nothing. InputError
/// "<folder>: cannot be read: ..." where that is true of it or of one below it.
std::vector<std::string> filesBelow(const std::string& folder);

}  // namespace Vesk::Kit::internal

#endif
