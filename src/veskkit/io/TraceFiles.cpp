#include <veskkit/Error.h>
#include <veskkit/internal/Text.h>
#include <veskkit/io/CsvReader.h>
#include <veskkit/io/InputFile.h>
#include <veskkit/io/JsonLinesReader.h>
#include <veskkit/io/TraceFiles.h>
#include <veskkit/io/XmlReader.h>
#include <veskkit/io/internal/FilesBelow.h>

#include <algorithm>
#include <filesystem>
#include <ios>
#include <optional>
#include <streambuf>
#include <string_view>
#include <system_error>
#include <utility>

namespace Vesk::Kit {

namespace fs = std::filesystem;
using internal::oneLine;

namespace {

std::optional<TraceFormat> formatOfExtension(const fs::path& path) {
    std::string extension = path.extension().string();
    for (char& c : extension) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    if (extension == ".jsonl" || extension == ".ndjson" || extension == ".json") {
        return TraceFormat::JsonLines;
    }
    if (extension == ".csv" || extension == ".tsv") return TraceFormat::Csv;
    if (extension == ".xml") return TraceFormat::Xml;
    return std::nullopt;
}

/// Takes white space and byte order marks from the stream, and gives them back.
std::string blanksBefore(std::istream& in) {
    using traits = std::istream::traits_type;
    constexpr std::string_view blanks = " \t\r\n\v\f\xEF\xBB\xBF";
    // More of them make no difference to what follows.
    constexpr std::size_t most = std::size_t{1} << 16;
    std::string taken;
    std::streambuf& buffer = *in.rdbuf();
    for (auto c = buffer.sgetc(); !traits::eq_int_type(c, traits::eof()) && taken.size() < most &&
                                  blanks.find(traits::to_char_type(c)) != std::string_view::npos;
         c = buffer.snextc()) {
        taken += traits::to_char_type(c);
    }
    return taken;
}

TraceFormat formatOfCharacter(std::istream::int_type c) {
    using traits = std::istream::traits_type;
    // A list of objects is what JSON Lines are taken for.
    if (traits::eq_int_type(c, '{') || traits::eq_int_type(c, '[')) return TraceFormat::JsonLines;
    return traits::eq_int_type(c, '<') ? TraceFormat::Xml : TraceFormat::Csv;
}

/// By the first character behind blanks.
TraceFormat formatOfText(std::istream& in) {
    try {
        blanksBefore(in);
        return formatOfCharacter(in.rdbuf()->sgetc());
    } catch (const std::ios_base::failure&) {
        return TraceFormat::JsonLines;  // whose reader says what is the matter
    }
}

TraceFormat formatOfFile(const std::string& path, TraceFormat asked) {
    if (asked != TraceFormat::Guess) return asked;
    if (const auto known = formatOfExtension(path)) return *known;
    std::ifstream file = openInput(path);
    return formatOfText(file);
}

std::unique_ptr<TraceReader> readerOfFile(const std::string& path, TraceFormat asked) {
    switch (formatOfFile(path, asked)) {
        case TraceFormat::Csv: return std::make_unique<CsvReader>(path);
        case TraceFormat::Xml: return std::make_unique<XmlReader>(path);
        default: return std::make_unique<JsonLinesReader>(path);
    }
}

std::unique_ptr<TraceReader> readerOfFormat(std::istream& stream, std::string name,
                                            TraceFormat format) {
    switch (format) {
        case TraceFormat::Csv: return std::make_unique<CsvReader>(stream, std::move(name));
        case TraceFormat::Xml: return std::make_unique<XmlReader>(stream, std::move(name));
        default: return std::make_unique<JsonLinesReader>(stream, std::move(name));
    }
}

/// Some text, and after it what a stream still holds.
class PrefixedBuffer : public std::streambuf {
public:
    PrefixedBuffer(std::string before, std::istream& rest) : prefix(std::move(before)), in(rest) {
        setg(prefix.data(), prefix.data(), prefix.data() + prefix.size());
    }

private:
    int_type underflow() override {
        // What is there already, and no more: a pipe may take its time.
        if (traits_type::eq_int_type(in.rdbuf()->sgetc(), traits_type::eof())) {
            return traits_type::eof();
        }
        const std::streamsize there =
            std::clamp<std::streamsize>(in.rdbuf()->in_avail(), 1, sizeof block);
        const std::streamsize got = in.rdbuf()->sgetn(block, there);
        setg(block, block, block + got);
        return traits_type::to_int_type(block[0]);
    }

    std::string prefix;
    std::istream& in;
    char block[4096];
};

/// Reads a stream in the format that its text looks like.
class GuessingReader : public TraceReader {
public:
    GuessingReader(std::istream& stream, std::string name)
        : format(TraceFormat::JsonLines), buffer(lookInto(stream), stream), in(&buffer) {
        reader = readerOfFormat(in, std::move(name), format);
    }

    bool next(Trace& trace) override { return reader->next(trace); }

private:
    /// Sets the format, and gives back what had to be taken for that.
    std::string lookInto(std::istream& stream) {
        std::string blanks;
        try {
            blanks = blanksBefore(stream);
            format = formatOfCharacter(stream.rdbuf()->sgetc());
        } catch (const std::ios_base::failure&) {
            // The reader is going to say what is the matter.
        }
        return blanks;
    }

    TraceFormat format;
    PrefixedBuffer buffer;
    std::istream in;
    std::unique_ptr<TraceReader> reader;
};

/// The files of traces in a folder and below it, in the order of their paths.
std::vector<std::string> tracesBelow(const std::string& folder, TraceFormat format) {
    std::vector<std::string> found = internal::filesBelow(folder);
    if (format == TraceFormat::Guess) {
        const auto isOther = [](const std::string& path) { return !formatOfExtension(path); };
        found.erase(std::remove_if(found.begin(), found.end(), isOther), found.end());
    }
    if (found.empty()) {
        throw InputError(oneLine(folder) +
                         ": found no file of traces below this folder, expected .jsonl, .csv or "
                         ".xml");
    }
    return found;
}

std::string labelOfFileName(const std::string& path) {
    const std::string stem = fs::path(path).stem().string();
    const std::size_t last = stem.find_last_not_of("0123456789_-. ");
    return last == std::string::npos ? stem : stem.substr(0, last + 1);
}

std::string labelOfFolder(const std::string& path) {
    std::error_code error;
    const fs::path whole = fs::absolute(path, error);
    return (error ? fs::path(path) : whole.lexically_normal()).parent_path().filename().string();
}

}  // namespace

TraceFiles::TraceFiles(const std::vector<std::string>& paths, TraceFilesOptions options)
    : settings(options) {
    for (const std::string& path : paths) {
        std::error_code error;
        if (!fs::is_directory(path, error)) {
            if (!fs::exists(path, error)) openInput(path);  // says what is the matter
            list.push_back(path);
            continue;
        }
        for (std::string& file : tracesBelow(path, settings.format)) {
            list.push_back(std::move(file));
        }
    }
}

bool TraceFiles::next(Trace& trace) {
    while (true) {
        if (current == nullptr) {
            if (upcoming == list.size()) return false;
            current = readerOfFile(list[upcoming++], settings.format);
        }
        if (current->next(trace)) break;
        current.reset();
    }
    const std::string& file = list[upcoming - 1];
    switch (settings.label) {
        case LabelSource::Folder: trace.gesture = labelOfFolder(file); break;
        case LabelSource::FileName: trace.gesture = labelOfFileName(file); break;
        case LabelSource::Record: {
            const auto* table = dynamic_cast<const CsvReader*>(current.get());
            const bool unnamed = table != nullptr && table->holdsOneTrace();
            if (!unnamed || !trace.gesture.empty()) break;
            trace.gesture = labelOfFileName(file);
            if (unlabelled.empty() && !table->namesGestures()) unlabelled = file;
            break;
        }
    }
    return true;
}

std::unique_ptr<TraceReader> readerOf(std::istream& stream, std::string name, TraceFormat format) {
    if (format == TraceFormat::Guess)
        return std::make_unique<GuessingReader>(stream, std::move(name));
    return readerOfFormat(stream, std::move(name), format);
}

std::vector<Trace> readTraces(const std::vector<std::string>& paths, TraceFilesOptions options) {
    TraceFiles files(paths, options);
    std::vector<Trace> traces;
    for (Trace trace; files.next(trace);) traces.push_back(std::move(trace));
    return traces;
}

std::vector<Trace> readTraces(const std::string& path, TraceFilesOptions options) {
    return readTraces(std::vector<std::string>{path}, options);
}

}  // namespace Vesk::Kit
