#include <veskkit/Error.h>
#include <veskkit/internal/Text.h>
#include <veskkit/io/InputFile.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace Vesk::Kit {

std::ifstream openInput(const std::string& path) {
    const std::string place = internal::oneLine(path);
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(path, error);
    if (status.type() == std::filesystem::file_type::not_found) {
        throw InputError(place + ": found no such file, expected a file that can be read");
    }
    if (status.type() == std::filesystem::file_type::directory) {
        throw InputError(place + ": found a directory, expected a file");
    }
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    if (!file.is_open()) {
        throw InputError(place + ": cannot be opened: " +
                         (errno != 0 ? std::strerror(errno) : "unknown reason"));
    }
    return file;
}

}  // namespace Vesk::Kit
