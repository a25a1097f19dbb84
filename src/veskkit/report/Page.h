#ifndef VESK_VESKKIT_REPORT_PAGE_H
#define VESK_VESKKIT_REPORT_PAGE_H

#include <string>
#include <vector>

namespace Vesk::Kit {

/// A table of words and numbers; the first cell of a row names it.
struct Table {
    /// The head of a column.
    struct Column {
        std::string name;     ///< above it
        bool number = false;  ///< aligned on the right
    };

    std::string caption;                         ///< what the table shows
    std::vector<Column> columns;                 ///< from left to right
    std::vector<std::vector<std::string>> rows;  ///< of one text a column each
};

/// A plot, as text of one svg element, and what is said about it.
struct Figure {
    std::string svg;      ///< markup, taken as it is
    std::string caption;  ///< plain text below it
};

/// One HTML file that needs nothing else: no network, no script, which its own policy rules out
/// too. Light or dark as the reader's system has it, light on paper; headings, captions and scroll
/// areas that the keyboard reaches. The same bytes for the same content, and well-formed XML. All
/// texts are plain and escaped here; only a figure's `svg` is markup.
class Page {
public:
    /// An empty page; the title is its heading too.
    explicit Page(std::string title);

    /// Begins a section, which is listed at the top of the page.
    void section(const std::string& heading);

    /// Begins a part of a section.
    void part(const std::string& heading);

    /// Adds a paragraph of plain text.
    void paragraph(const std::string& text);

    /// Adds a table.
    void table(const Table& table);

    /// Adds a plot and what is said about it.
    void figure(const Figure& figure);

    /// Small figures side by side.
    void gallery(const std::vector<Figure>& figures);

    /// The whole file. `foot` is its last line.
    std::string html(const std::string& foot) const;

private:
    std::string title;
    std::vector<std::string> headings;  ///< of the sections
    std::string content;
};

}  // namespace Vesk::Kit

#endif
