#include <vesk/base/internal/OutputFile.h>

namespace Vesk::ML::internal {

std::ofstream openOutput(const char* path) {
    std::ofstream out;
    out.imbue(std::locale::classic());
    out.open(path);
    return out;
}

bool saveFile(const std::string& path, const std::string& text) {
    std::ofstream out = openOutput(path.c_str());
    if (!out.is_open()) return false;
    out.write(text.data(), static_cast<std::streamsize>(text.size()));
    out.close();
    return !out.fail();
}

std::string upToNul(std::string text) {
    const std::size_t end = text.find('\0');
    if (end != std::string::npos) text.resize(end);
    return text;
}

}  // namespace Vesk::ML::internal
