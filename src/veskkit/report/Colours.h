#ifndef VESK_VESKKIT_REPORT_COLOURS_H
#define VESK_VESKKIT_REPORT_COLOURS_H

#include <string>

namespace Vesk::Kit {

/// The style sheet that gives plots the colours of a light or a dark page: custom properties of the
/// root, dark ones where the reader's system asks for them on a screen. Without it plots have the
/// light page's colours, and text and axes the colour of the text around them.
std::string plotColours();

}  // namespace Vesk::Kit

#endif
