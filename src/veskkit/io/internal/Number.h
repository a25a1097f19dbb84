#ifndef VESK_VESKKIT_IO_INTERNAL_NUMBER_H
#define VESK_VESKKIT_IO_INTERNAL_NUMBER_H

#include <string>

namespace Vesk::Kit::internal {

/// Reads the whole of a text, blanks around it apart, as a finite decimal number in the classic
/// locale. False where it is none.
bool readNumber(const std::string& text, double& value);

}  // namespace Vesk::Kit::internal

#endif
