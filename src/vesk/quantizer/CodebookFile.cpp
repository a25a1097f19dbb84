#include <vesk/quantizer/VectorQuantizer2D.h>

#include <vesk/base/internal/InputFile.h>
#include <vesk/base/internal/OutputFile.h>

#include <locale>
#include <sstream>
#include <string>

namespace Vesk::ML {
namespace {

std::string composeCodebook(const std::vector<double>& codebook) {
    return internal::composeText([&](std::ostream& out) {
        const char* separator = "";
        for (const double entry : codebook) {
            out << separator << entry;
            separator = "\n";
        }
    });
}

}  // namespace

bool VectorQuantizer2D::printCodebook(char* path) {
    return internal::writeFile(path, composeCodebook(codebook));
}

bool VectorQuantizer2D::save(const std::string& path) const {
    return internal::saveFile(path, composeCodebook(codebook));
}

bool VectorQuantizer2D::loadCodebook(char* path) {
    codebookSize = 0;
    codebook.clear();
    internal::InputFile in(path);
    if (!in.isOpen()) return false;

    std::string line;
    std::istringstream number;
    number.imbue(std::locale::classic());
    number.exceptions(std::ios_base::badbit);
    // Kept from line to line: a blank line repeats the one before, and so does the empty one after
    // a line end that closes the file.
    double value = 0.0;
    while (!in.atEnd() && in.readLine(line)) {
        number.clear();
        number.str(line);
        number >> value;
        in.requireLength(codebook.size() + 1);
        codebook.push_back(value);
    }
    codebookReady = true;
    codebookSize = static_cast<int>(codebook.size());
    return true;
}

}  // namespace Vesk::ML
