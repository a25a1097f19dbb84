#include <vesk/base/internal/OutputFile.h>

#include <fstream>

namespace Vesk::ML::internal {
namespace {

/// How a file was written.
struct Outcome {
    bool opened;
    bool whole;
};

Outcome put(const char* path, const std::string& text) {
    std::ofstream out;
    out.imbue(std::locale::classic());
    if (path != nullptr) out.open(path);
    if (!out.is_open()) return {false, false};
    out.write(text.data(), static_cast<std::streamsize>(text.size()));
    out.close();
    return {true, !out.fail()};
}

}  // namespace

bool writeFile(const char* path, const std::string& text) { return put(path, text).opened; }

bool saveFile(const std::string& path, const std::string& text) {
    return put(path.c_str(), text).whole;
}

std::string upToNul(std::string text) {
    const std::size_t end = text.find('\0');
    if (end != std::string::npos) text.resize(end);
    return text;
}

}  // namespace Vesk::ML::internal
