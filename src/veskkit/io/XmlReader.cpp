#include <veskkit/Error.h>
#include <veskkit/internal/Text.h>
#include <veskkit/io/InputFile.h>
#include <veskkit/io/XmlReader.h>
#include <veskkit/io/internal/Number.h>

#include <pugixml.hpp>

#include <algorithm>
#include <ios>
#include <utility>
#include <vector>

namespace Vesk::Kit {

using internal::joined;
using internal::oneLine;
using internal::quoted;

namespace {

constexpr std::size_t chunk = std::size_t{1} << 16;

std::string readAll(std::istream& in, const std::string& source) {
    std::string text;
    try {
        for (std::streamsize got = 1; got > 0;) {
            const std::size_t before = text.size();
            text.resize(before + chunk);
            got = in.rdbuf()->sgetn(text.data() + before, chunk);
            text.resize(before + static_cast<std::size_t>(std::max<std::streamsize>(got, 0)));
            if (text.size() > XmlReader::longestFile) {
                throw InputError(joined(oneLine(source), ": found more than ",
                                        XmlReader::longestFile, " bytes of XML, expected fewer"));
            }
        }
    } catch (const std::ios_base::failure&) {
        throw InputError(oneLine(source) + ": cannot be read");
    }
    return text;
}

std::string withoutDigitsAtEnd(const std::string& name) {
    const std::size_t last = name.find_last_not_of("0123456789");
    return last == std::string::npos ? name : name.substr(0, last + 1);
}

/// The element that follows in the order of the document; null at its end.
pugi::xml_node following(pugi::xml_node node) {
    if (const pugi::xml_node child = node.first_child()) return child;
    while (node && !node.next_sibling()) node = node.parent();
    return node.next_sibling();
}

/// Tells the line of any position in a text in constant time.
class LineNumbers {
public:
    explicit LineNumbers(const std::string& indexed) : text(indexed) {
        for (std::size_t at = 0; at < text.size(); at += block) {
            before.push_back(before.empty() ? 0 : before.back() + lineEnds(at - block, at));
        }
    }

    /// Counted from 1; beyond the text that of its end.
    std::size_t at(std::ptrdiff_t offset) const {
        if (text.empty() || offset <= 0) return 1;
        const std::size_t end = std::min(static_cast<std::size_t>(offset), text.size());
        const std::size_t last = (end - 1) / block;
        return before[last] + lineEnds(last * block, end) + 1;
    }

private:
    static constexpr std::size_t block = 256;

    std::size_t lineEnds(std::size_t first, std::size_t end) const {
        const auto at = [this](std::size_t i) {
            return text.begin() + static_cast<std::ptrdiff_t>(i);
        };
        return static_cast<std::size_t>(std::count(at(first), at(end), '\n'));
    }

    const std::string& text;
    std::vector<std::size_t> before;  ///< line ends before each block
};

}  // namespace

class XmlReader::Document {
public:
    Document(std::istream& in, std::string name)
        : source(std::move(name)), text(readAll(in, source)), lines(text) {
        const pugi::xml_parse_result parsed = document.load_buffer(
            text.data(), text.size(), pugi::parse_default, pugi::encoding_auto);
        if (parsed) {
            node = document.first_child();
            return;
        }
        throw InputError(joined(placeAt(parsed.offset), ": found text that is not XML (",
                                parsed.description(), "), expected a gesture log"));
    }

    bool next(Trace& result) {
        while (node && std::string_view(node.name()) != "Gesture") node = following(node);
        if (!node) {
            if (std::exchange(any, true)) return false;
            throw InputError(oneLine(source) + ": found no element Gesture, expected at least 1");
        }
        any = true;
        const pugi::xml_node gesture = node;
        // Whatever becomes of this one, the next call goes on behind it.
        node = following(node);
        result = read(gesture);
        return true;
    }

private:
    Trace read(pugi::xml_node gesture) const {
        Trace trace;
        trace.source = source;
        trace.line = lines.at(gesture.offset_debug());
        trace.gesture = withoutDigitsAtEnd(gesture.attribute("Name").value());
        trace.user = gesture.attribute("Subject").value();
        std::size_t strokes = 0;
        for (const pugi::xml_node stroke : gesture.children("Stroke")) {
            if (++strokes > 1) {
                throw InputError(placeOf(trace) +
                                 ": found a gesture of several strokes, expected "
                                 "one stroke");
            }
            addPoints(stroke, trace);
        }
        addPoints(gesture, trace);
        return trace;
    }

    void addPoints(pugi::xml_node parent, Trace& trace) const {
        for (const pugi::xml_node point : parent.children("Point")) {
            trace.points.push_back({coordinate(point, "X"), coordinate(point, "Y")});
        }
    }

    double coordinate(pugi::xml_node point, const char* name) const {
        const pugi::xml_attribute attribute = point.attribute(name);
        double value = 0.0;
        if (internal::readNumber(attribute.value(), value)) return value;
        const std::string found = attribute ? quoted(attribute.value()) : "no value";
        throw InputError(joined(placeAt(point.offset_debug()), ": found ", found, " as ", name,
                                ", expected a finite number"));
    }

    std::string placeAt(std::ptrdiff_t offset) const {
        return joined(oneLine(source), ':', lines.at(offset));
    }

    std::string source;
    std::string text;
    LineNumbers lines;
    pugi::xml_document document;
    pugi::xml_node node;  ///< where to look for the next gesture
    bool any = false;
};

XmlReader::XmlReader(const std::string& path) {
    std::ifstream file = openInput(path);
    document = std::make_unique<Document>(file, path);
}

XmlReader::XmlReader(std::istream& stream, std::string name)
    : document(std::make_unique<Document>(stream, std::move(name))) {}

XmlReader::~XmlReader() = default;

bool XmlReader::next(Trace& trace) { return document->next(trace); }

}  // namespace Vesk::Kit
