#include <veskkit/report/Page.h>

#include <veskkit/report/Colours.h>
#include <veskkit/report/internal/Svg.h>

#include <cstddef>
#include <utility>

namespace Vesk::Kit {

using internal::escaped;

namespace {

constexpr const char* style = R"css(
:root{color-scheme:light dark;--page:#fff;--ink:#1b1f24;--soft:#5a6470;--line:#d5dae0;--band:#f4f6f8;
--link:#0b57a8}
@media screen and (prefers-color-scheme:dark){:root{--page:#14181d;--ink:#e4e8ed;--soft:#a3adb8;
--line:#39424c;--band:#1c2228;--link:#8ec5ff}}
*{box-sizing:border-box}
html{background:var(--page);color:var(--ink);font:16px/1.5 system-ui,sans-serif}
body{max-width:72rem;margin:0 auto;padding:1rem 1.25rem 3rem}
h1,h2,h3{line-height:1.25;overflow-wrap:anywhere}
h1{font-size:1.75rem;margin:.5rem 0 1rem}
h2{font-size:1.3rem;margin:2.5rem 0 .75rem;padding-top:.75rem;border-top:1px solid var(--line)}
h3{font-size:1.05rem;margin:1.5rem 0 .5rem}
p{max-width:48rem;margin:.5rem 0;overflow-wrap:anywhere}
a{color:var(--link)}
:focus-visible{outline:3px solid var(--link);outline-offset:2px}
.skip{position:absolute;left:-100rem;padding:.5rem 1rem;background:var(--page)}
.skip:focus{left:1rem;top:.5rem}
nav ol{display:flex;flex-wrap:wrap;gap:.25rem 1.25rem;margin:0;padding:0;list-style:none}
nav a{overflow-wrap:anywhere}
.scroll{overflow-x:auto;max-width:100%;margin:.75rem 0}
table{border-collapse:collapse;font-variant-numeric:tabular-nums}
caption{text-align:left;color:var(--soft);padding:.25rem 0}
th,td{padding:.3rem .75rem;border-bottom:1px solid var(--line);text-align:left;vertical-align:top}
thead th{white-space:nowrap;background:var(--band)}
tbody th{font-weight:600;min-width:7rem;overflow-wrap:anywhere}
.n{text-align:right;white-space:nowrap}
figure{margin:1rem 0}figure .scroll{margin:0}
figcaption{color:var(--soft);font-size:.9rem;max-width:48rem;overflow-wrap:anywhere}
svg{display:block}
.gallery{display:flex;flex-wrap:wrap;gap:1rem 1.5rem}
.gallery figure{margin:.25rem 0;width:220px}
footer{margin-top:3rem;padding-top:.75rem;border-top:1px solid var(--line);color:var(--soft)}
@media print{html{font-size:10pt}body{max-width:none;padding:0}nav,.skip{display:none}
.scroll{overflow:visible}svg{max-width:100%;height:auto}
figure,tr{break-inside:avoid}h2,h3,caption{break-after:avoid}}
)css";

constexpr const char* head = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8"/>
<meta http-equiv="Content-Security-Policy" content="default-src 'none'; style-src 'unsafe-inline'; img-src data:"/>
<meta name="viewport" content="width=device-width,initial-scale=1"/>
<meta name="color-scheme" content="light dark"/>
<link rel="icon" href="data:,"/>
)";

/// Something wide that scrolls by itself, with the keyboard too.
std::string scrolling(const std::string& name, const std::string& markup) {
    return fmt::format(
        "<div class=\"scroll\" role=\"region\" tabindex=\"0\" aria-label=\"{}\">{}</div>",
        escaped(name), markup);
}

std::string alignment(const Table& table, std::size_t column) {
    return column < table.columns.size() && table.columns[column].number ? " class=\"n\"" : "";
}

}  // namespace

Page::Page(std::string title_) : title(std::move(title_)) {}

void Page::section(const std::string& heading) {
    headings.push_back(heading);
    content += fmt::format("<h2 id=\"s{}\">{}</h2>\n", headings.size(), escaped(heading));
}

void Page::part(const std::string& heading) {
    content += fmt::format("<h3>{}</h3>\n", escaped(heading));
}

void Page::paragraph(const std::string& text) {
    content += fmt::format("<p>{}</p>\n", escaped(text));
}

void Page::table(const Table& table) {
    std::string markup =
        fmt::format("<table><caption>{}</caption>\n<thead><tr>", escaped(table.caption));
    for (std::size_t c = 0; c < table.columns.size(); ++c) {
        markup += fmt::format("<th scope=\"col\"{}>{}</th>", alignment(table, c),
                              escaped(table.columns[c].name));
    }
    markup += "</tr></thead>\n<tbody>\n";
    for (const std::vector<std::string>& row : table.rows) {
        markup += "<tr>";
        for (std::size_t c = 0; c < row.size(); ++c) {
            markup += c == 0 ? "<th scope=\"row\"" : "<td";
            markup += alignment(table, c) + '>' + escaped(row[c]) + (c == 0 ? "</th>" : "</td>");
        }
        markup += "</tr>\n";
    }
    content += scrolling("table: " + table.caption, markup + "</tbody></table>") + '\n';
}

void Page::figure(const Figure& figure) {
    content +=
        fmt::format("<figure>{}<figcaption>{}</figcaption></figure>\n",
                    scrolling("figure: " + figure.caption, figure.svg), escaped(figure.caption));
}

void Page::gallery(const std::vector<Figure>& figures) {
    content += "<div class=\"gallery\">\n";
    for (const Figure& figure : figures) {
        content += fmt::format("<figure>{}<figcaption>{}</figcaption></figure>\n", figure.svg,
                               escaped(figure.caption));
    }
    content += "</div>\n";
}

std::string Page::html(const std::string& foot) const {
    std::string contents;
    for (std::size_t i = 0; i < headings.size(); ++i) {
        contents += fmt::format("<li><a href=\"#s{}\">{}</a></li>\n", i + 1, escaped(headings[i]));
    }
    const std::string list =
        contents.empty()
            ? ""
            : fmt::format("<nav aria-label=\"Contents\"><ol>\n{}</ol></nav>\n", contents);
    return fmt::format(
        "{}<title>{}</title>\n<style>{}{}</style>\n</head>\n<body>\n"
        "<a class=\"skip\" href=\"#main\">Skip to the content</a>\n"
        "<header><h1>{}</h1>\n{}</header>\n<main id=\"main\" tabindex=\"-1\">\n{}</main>\n"
        "<footer>{}</footer>\n</body>\n</html>\n",
        head, escaped(title), style, plotColours(), escaped(title), list, content, escaped(foot));
}

}  // namespace Vesk::Kit
