#ifndef VESK_VESKKIT_IO_TRACEFILES_H
#define VESK_VESKKIT_IO_TRACEFILES_H

#include <veskkit/io/TraceReader.h>

#include <cstddef>
#include <istream>
#include <memory>
#include <string>
#include <vector>

namespace Vesk::Kit {

/// How traces are written down.
enum class TraceFormat {
    Guess,      ///< by the file's extension, else by its first character
    JsonLines,  ///< .jsonl, .ndjson, .json; text that begins with { or [
    Csv,        ///< .csv, .tsv; all other text
    Xml         ///< .xml; text that begins with <
};

/// Where a trace's label comes from.
enum class LabelSource {
    Record,    ///< what the trace's own record says; where that is nothing and the file is a table
               ///< of one trace, the file's name
    FileName,  ///< the file's name without extension, and without the digits and separators at its
               ///< end: "circle_03.csv" is a circle
    Folder     ///< the name of the folder that the file is in
};

/// How files of traces are read.
struct TraceFilesOptions {
    TraceFormat format = TraceFormat::Guess;  ///< of all files
    LabelSource label = LabelSource::Record;  ///< of all traces
};

/// Reads the traces of files, and of all files below folders, one trace at a time.
class TraceFiles : public TraceReader {
public:
    /// Files in the order given; a folder stands for the files of traces in it and below it (those
    /// with an extension of a format, all where a format is given), in the order of their paths.
    /// Hidden files and folders are left out. InputError "<path>: ..." for what does not exist and
    /// for a folder without such files; files are opened when it is their turn.
    explicit TraceFiles(const std::vector<std::string>& paths, TraceFilesOptions options = {});

    /// The paths of all files, in the order in which they are read.
    const std::vector<std::string>& files() const { return list; }

    bool next(Trace& trace) override;

    /// With LabelSource::Record, the first file so far that gave its name to its trace since its
    /// table has no column of labels; empty where there is none.
    const std::string& firstWithoutLabels() const { return unlabelled; }

private:
    std::vector<std::string> list;
    std::string unlabelled;
    TraceFilesOptions settings;
    std::size_t upcoming = 0;
    std::unique_ptr<TraceReader> current;
};

/// A reader of one stream, which outlives it; `name` stands for it in messages and traces. With
/// `Guess` the first character that is no white space decides.
std::unique_ptr<TraceReader> readerOf(std::istream& stream, std::string name,
                                      TraceFormat format = TraceFormat::Guess);

/// All traces of files and folders, in memory at once. InputError as TraceFiles and its readers.
std::vector<Trace> readTraces(const std::vector<std::string>& paths,
                              TraceFilesOptions options = {});
/// The same of one file or folder.
std::vector<Trace> readTraces(const std::string& path, TraceFilesOptions options = {});

}  // namespace Vesk::Kit

#endif
