#ifndef VESK_VESKKIT_REPORT_INTERNAL_SVG_H
#define VESK_VESKKIT_REPORT_INTERNAL_SVG_H

#include <fmt/format.h>

#include <cstddef>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>

namespace Vesk::Kit::internal {

/// Text as it may stand in an element or in a quoted attribute: what is special in XML is escaped;
/// control characters and what is no UTF-8 become replacement characters.
std::string escaped(std::string_view text);

/// The number of characters of a UTF-8 text.
std::size_t lengthOf(std::string_view text);

/// A text of at most `longest` characters, the last one an ellipsis where it was cut.
std::string shortened(std::string_view text, std::size_t longest);

/// A coordinate: at most two decimals, no trailing zeros; 0 for what is not finite.
std::string coordinate(double value);

/// Writes one <svg> element. Lengths are in pixels of a screen.
class Svg {
public:
    /// `title` is what is read out instead of the picture.
    Svg(double width, double height, std::string_view title);

    /// Appends markup, formatted.
    template <typename... Parts>
    void add(fmt::format_string<Parts...> markup, Parts&&... parts) {
        fmt::format_to(std::back_inserter(text), markup, std::forward<Parts>(parts)...);
    }

    /// Appends a label; `attributes` are markup.
    void label(double x, double y, std::string_view words, std::string_view attributes = {});

    /// Appends a label turned around its place, in degrees against the clock.
    void turnedLabel(double x, double y, int degrees, std::string_view words,
                     std::string_view attributes = {});

    /// The closed element.
    std::string take();

private:
    std::string text;
};

}  // namespace Vesk::Kit::internal

#endif
