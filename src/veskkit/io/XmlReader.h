#ifndef VESK_VESKKIT_IO_XMLREADER_H
#define VESK_VESKKIT_IO_XMLREADER_H

#include <veskkit/io/TraceReader.h>

#include <cstddef>
#include <istream>
#include <memory>
#include <string>

namespace Vesk::Kit {

/// Reads traces from XML gesture logs: elements `Gesture` (the document's root, or anywhere below
/// it) with the attributes Name and Subject and children `Point` with the attributes X and Y, in a
/// `Stroke` or not. The label is the Name without the digits at its end, the user the Subject; both
/// may be absent. Other elements and attributes are ignored.
///
/// Holds the whole file in memory, up to `longestFile` bytes, and takes time in proportion.
class XmlReader : public TraceReader {
public:
    static constexpr std::size_t longestFile = std::size_t{64} << 20;  ///< bytes

    /// Opens a file. InputError "<path>: ..." for a directory, for what cannot be read, and for
    /// what is not XML.
    explicit XmlReader(const std::string& path);

    /// Reads from a stream, as a whole and at once; `name` stands for it in messages and traces.
    XmlReader(std::istream& stream, std::string name);

    ~XmlReader() override;

    /// InputError for a gesture of several strokes, and for positions that are no numbers.
    bool next(Trace& trace) override;

private:
    class Document;
    std::unique_ptr<Document> document;
};

}  // namespace Vesk::Kit

#endif
