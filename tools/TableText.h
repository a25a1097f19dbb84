#ifndef VESK_TOOLS_TABLETEXT_H
#define VESK_TOOLS_TABLETEXT_H

#include <veskkit/report/Page.h>

#include <string>

namespace Vesk::Tool {

/// A table's columns and rows, without its caption, as aligned lines; text of a last column that is
/// long goes on below. Control characters become question marks.
std::string tableText(const Kit::Table& table);

}  // namespace Vesk::Tool

#endif
