#include <veskkit/Error.h>
#include <veskkit/internal/Text.h>
#include <veskkit/io/internal/FilesBelow.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include <dirent.h>

namespace Vesk::Kit::internal {
namespace {

namespace fs = std::filesystem;

/// An open folder. (The standard library's iterators over one end the program where memory runs
/// out.)
class Folder {
public:
    explicit Folder(const std::string& path) : stream(::opendir(path.c_str())) {
        if (stream == nullptr) fail();
    }
    ~Folder() { ::closedir(stream); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    /// Null behind the last one; valid until the next call.
    const dirent* next() {
        errno = 0;
        const dirent* const entry = ::readdir(stream);
        if (entry == nullptr && errno != 0) fail();
        return entry;
    }

private:
    [[noreturn]] static void fail() { throw std::system_error(errno, std::generic_category()); }

    DIR* stream;
};

/// Links are not followed.
fs::file_type typeOf(const dirent& entry, const std::string& path) {
    switch (entry.d_type) {
        case DT_REG: return fs::file_type::regular;
        case DT_DIR: return fs::file_type::directory;
        case DT_LNK: return fs::file_type::symlink;
        case DT_UNKNOWN: break;  // not every file system says it
        default: return fs::file_type::unknown;
    }
    std::error_code unreadable;
    return fs::symlink_status(path, unreadable).type();
}

/// Adds the files in a folder, and the folders in it.
void readFolder(const std::string& path, std::vector<std::string>& files,
                std::vector<std::string>& folders) {
    Folder folder(path);
    while (const dirent* const entry = folder.next()) {
        if (entry->d_name[0] == '.') continue;
        std::string inside = fs::path(path) / entry->d_name;
        const fs::file_type type = typeOf(*entry, inside);
        std::error_code unreadable;
        if (type == fs::file_type::directory) {
            folders.push_back(std::move(inside));
        } else if (type == fs::file_type::regular ||
                   (type == fs::file_type::symlink && fs::is_regular_file(inside, unreadable))) {
            files.push_back(std::move(inside));
        }
    }
}

}  // namespace

std::vector<std::string> filesBelow(const std::string& folder) {
    std::vector<std::string> files;
    std::vector<std::string> folders = {folder};
    try {
        while (!folders.empty()) {
            const std::string path = std::move(folders.back());
            folders.pop_back();
            readFolder(path, files, folders);
        }
    } catch (const std::system_error& error) {
        throw InputError(oneLine(folder) + ": cannot be read: " + error.code().message());
    }
    std::sort(files.begin(), files.end());
    return files;
}

}  // namespace Vesk::Kit::internal
