#ifndef VESK_TESTS_SUPPORT_MARKUP_H
#define VESK_TESTS_SUPPORT_MARKUP_H

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <pugixml.hpp>

#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace Vesk::Test {

/// Markup read back: well-formed, UTF-8, every number finite.
class Markup {
public:
    explicit Markup(const std::string& text) {
        const auto result = document.load_buffer(text.data(), text.size(), pugi::parse_full);
        if (!result) throw std::runtime_error(std::string(result.description()) + "\n" + text);
        EXPECT_NO_THROW(nlohmann::json(text).dump()) << "not UTF-8";
        for (const auto& it : document.select_nodes("//@*[name() != 'content']")) {
            const std::string value = it.attribute().value();
            for (const char* word : {"nan", "inf", "e+"}) {
                EXPECT_EQ(value.find(word), std::string::npos) << it.attribute().name() << value;
            }
        }
    }

    std::vector<pugi::xml_node> all(const char* path) const {
        std::vector<pugi::xml_node> nodes;
        for (const auto& it : document.select_nodes(path)) nodes.push_back(it.node());
        return nodes;
    }
    std::size_t count(const char* path) const { return all(path).size(); }

    pugi::xml_node one(const char* path) const {
        const auto nodes = all(path);
        if (nodes.size() != 1) {
            throw std::runtime_error(std::to_string(nodes.size()) + " of " + path);
        }
        return nodes[0];
    }

    /// The texts of the elements, in order.
    std::vector<std::string> texts(const char* path) const {
        std::vector<std::string> result;
        for (const pugi::xml_node& node : all(path)) result.emplace_back(node.text().get());
        return result;
    }

    pugi::xml_document document;
};

/// A plot read back: one picture with a title.
inline Markup plotOf(const std::string& svg, const std::string& title) {
    Markup markup(svg);
    EXPECT_STREQ(markup.one("/svg").attribute("role").value(), "img");
    EXPECT_EQ(markup.one("/svg/title").text().get(), title);
    EXPECT_STREQ(markup.one("/svg").first_child().name(), "title");
    EXPECT_GT(markup.one("/svg").attribute("width").as_double(), 0.0);
    EXPECT_GT(markup.one("/svg").attribute("height").as_double(), 0.0);
    return markup;
}

/// The positions of a polyline, or of a path of single letters and pairs.
inline std::vector<std::pair<double, double>> positions(std::string text) {
    for (char& c : text) {
        if (c == ',' || c == 'M' || c == 'L') c = ' ';
    }
    std::vector<std::pair<double, double>> result;
    std::istringstream in(text);
    for (double x = 0, y = 0; in >> x >> y;) result.emplace_back(x, y);
    return result;
}

inline const char* const hostileName = "<b a=\"1\">&'\x01\xff";
inline const char* const hostileNameRead = "<b a=\"1\">&'\xEF\xBF\xBD\xEF\xBF\xBD";

}  // namespace Vesk::Test

#endif
