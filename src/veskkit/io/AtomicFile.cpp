#include <veskkit/Error.h>
#include <veskkit/internal/Text.h>
#include <veskkit/io/AtomicFile.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <streambuf>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Vesk::Kit {

namespace {

namespace fs = std::filesystem;

constexpr int mostLinks = 40;  // as the kernel follows

[[noreturn]] void fail(const std::string& path, int error) {
    throw OutputError(internal::oneLine(path) + ": cannot be written: " + std::strerror(error));
}

/// Where the bytes for a path have to go.
struct Destination {
    fs::path path;              ///< symbolic links followed
    bool through = false;       ///< opened and written as it is
    bool exists = false;        ///< a regular file stands there
    struct stat existing = {};  ///< that file's
};

/// A link in /proc stands for an open descriptor, whatever its text says.
bool inProc(const fs::path& path) {
    std::error_code error;
    const fs::path parent = path.has_parent_path() ? path.parent_path() : fs::path(".");
    const fs::path canonical = fs::canonical(parent, error);
    if (error) return false;
    const auto first = ++canonical.begin();
    return first != canonical.end() && *first == "proc";
}

Destination destinationOf(const std::string& requested) {
    Destination result;
    result.path = requested;
    for (int links = 0; links <= mostLinks; ++links) {
        struct stat found = {};
        if (::lstat(result.path.c_str(), &found) != 0) {
            if (errno == ENOENT && result.path.has_filename()) return result;
            fail(requested, errno);
        }
        if (S_ISDIR(found.st_mode)) fail(requested, EISDIR);
        if (S_ISREG(found.st_mode)) {
            result.exists = true;
            result.existing = found;
            return result;
        }
        if (!S_ISLNK(found.st_mode) || inProc(result.path)) {
            result.through = true;
            return result;
        }
        std::error_code error;
        const fs::path link = fs::read_symlink(result.path, error);
        if (error) fail(requested, error.value());
        result.path = link.is_absolute() ? link : result.path.parent_path() / link;
    }
    fail(requested, ELOOP);
}

/// A stream buffer over a descriptor. Remembers the first error; what follows it is dropped.
class DescriptorBuffer : public std::streambuf {
public:
    explicit DescriptorBuffer(int descriptor) : fd(descriptor) {
        setp(space.data(), space.data() + space.size());
    }

    int error() const { return firstError; }

protected:
    int_type overflow(int_type c) override {
        if (sync() != 0) return traits_type::eof();
        if (!traits_type::eq_int_type(c, traits_type::eof())) {
            *pptr() = traits_type::to_char_type(c);
            pbump(1);
        }
        return traits_type::not_eof(c);
    }

    int sync() override {
        const char* from = pbase();
        while (from != pptr() && firstError == 0) {
            const ssize_t written = ::write(fd, from, static_cast<std::size_t>(pptr() - from));
            if (written >= 0) {
                from += written;
            } else if (errno != EINTR) {
                firstError = errno;
            }
        }
        setp(space.data(), space.data() + space.size());
        return firstError == 0 ? 0 : -1;
    }

private:
    int fd;
    int firstError = 0;
    std::array<char, 1 << 16> space;
};

}  // namespace

/// The open descriptor and, where one is used, the temporary file.
class AtomicFile::Target {
public:
    explicit Target(const std::string& path)
        : requested(path), destination(destinationOf(path)), fd(open()), buffer(fd), out(&buffer) {}

    ~Target() {
        if (fd >= 0) ::close(fd);
        if (!temporary.empty()) ::unlink(temporary.c_str());
    }

    Target(const Target&) = delete;
    Target& operator=(const Target&) = delete;

    void commit() {
        out.flush();
        if (buffer.error() != 0) fail(requested, buffer.error());
        if (fd < 0) throw OutputError(internal::oneLine(requested) + ": already written");
        if (!destination.through && ::fsync(fd) != 0 && errno != EINVAL && errno != ENOTSUP) {
            fail(requested, errno);
        }
        const int closed = ::close(fd);
        fd = -1;
        if (closed != 0) fail(requested, errno);
        if (destination.through) return;
        // Nothing may fail once the file is in place.
        const fs::path parent = destination.path.parent_path();
        const std::string folder = parent.empty() ? "." : parent.string();
        if (::rename(temporary.c_str(), destination.path.c_str()) != 0) fail(requested, errno);
        temporary.clear();
        syncFolder(folder.c_str());
    }

    std::ostream& stream() { return out; }

private:
    int open() {
        if (destination.through) return openThrough();
        if (destination.exists &&
            ::faccessat(AT_FDCWD, destination.path.c_str(), W_OK, AT_EACCESS)) {
            fail(requested, errno);
        }
        const int descriptor = openTemporary();
        if (destination.exists) keepPermissions(descriptor);
        return descriptor;
    }

    int openThrough() const {
        const int descriptor = ::open(destination.path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
        if (descriptor < 0) fail(requested, errno);
        return descriptor;
    }

    int openTemporary() {
        static std::atomic<unsigned int> files{0};
        const mode_t mode = destination.exists ? 0600 : 0666;
        for (;;) {
            const std::string name =
                internal::joined(".vesk-", ::getpid(), '-', files.fetch_add(1), ".tmp");
            std::string path = (destination.path.parent_path() / name).string();
            const int descriptor =
                ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
            if (descriptor >= 0) {
                temporary = std::move(path);
                return descriptor;
            }
            if (errno != EEXIST) fail(requested, errno);
        }
    }

    /// The owner too, where we may; a mode that could not be kept must not pass unseen.
    void keepPermissions(int descriptor) {
        const struct stat& existing = destination.existing;
        if (::fchown(descriptor, existing.st_uid, existing.st_gid) != 0 && errno != EPERM) {
            discard(descriptor, errno);
        }
        if (::fchmod(descriptor, existing.st_mode & 07777) != 0) discard(descriptor, errno);
    }

    /// Fails during construction, when no destructor will run.
    [[noreturn]] void discard(int descriptor, int error) {
        ::close(descriptor);
        ::unlink(temporary.c_str());
        fail(requested, error);
    }

    /// Makes the rename itself last; the file is in place whether that works or not.
    static void syncFolder(const char* path) {
        const int folder = ::open(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (folder < 0) return;
        ::fsync(folder);
        ::close(folder);
    }

    std::string requested;
    Destination destination;
    std::string temporary;
    int fd;
    DescriptorBuffer buffer;
    std::ostream out;
};

AtomicFile::AtomicFile(const std::string& path) : target(std::make_unique<Target>(path)) {}

AtomicFile::~AtomicFile() = default;

std::ostream& AtomicFile::stream() { return target->stream(); }

void AtomicFile::commit() { target->commit(); }

void writeWhole(const std::string& path, std::string_view text) {
    AtomicFile file(path);
    file.stream().write(text.data(), static_cast<std::streamsize>(text.size()));
    file.commit();
}

}  // namespace Vesk::Kit
