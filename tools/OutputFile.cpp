#include "OutputFile.h"

#include "StandardStreams.h"

#include <filesystem>
#include <system_error>

namespace Vesk::Tool {

namespace {

/// Devices and pipes are written through, and may block for as long as the other side likes.
bool usesTemporaryFile(const std::string& path) {
    std::error_code problem;
    const auto status = std::filesystem::status(path, problem);
    return !std::filesystem::exists(status) || std::filesystem::is_regular_file(status) ||
           std::filesystem::is_directory(status);
}

}  // namespace

OutputFile::OutputFile(const std::string& path) {
    if (isStandard(path)) return;
    if (usesTemporaryFile(path)) delay.emplace();
    file.emplace(path);
}

void OutputFile::write(std::string_view text) {
    if (delay) delay->check();
    if (file) {
        file->stream().write(text.data(), static_cast<std::streamsize>(text.size()));
    } else {
        writeResult(text);
    }
}

void OutputFile::commit() {
    if (delay) delay->check();
    if (file) {
        file->commit();
    } else {
        flushResults();
    }
}

void OutputFile::probe(const std::string& path) {
    if (isStandard(path) || !usesTemporaryFile(path)) return;
    const OutputFile untouched(path);
}

}  // namespace Vesk::Tool
