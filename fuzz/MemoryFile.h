#ifndef VESK_FUZZ_MEMORYFILE_H
#define VESK_FUZZ_MEMORYFILE_H

#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

namespace Vesk::Fuzz {

/// A regular file that lies in memory, for readers and writers that take a path.
class MemoryFile {
public:
    MemoryFile() : descriptor(::memfd_create("vesk", MFD_CLOEXEC)) {
        if (descriptor < 0) throw std::runtime_error("no file in memory");
        name = "/proc/self/fd/" + std::to_string(descriptor);
    }
    explicit MemoryFile(const std::string& text) : MemoryFile() {
        if (::write(descriptor, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
            throw std::runtime_error("file in memory not written");
        }
    }
    ~MemoryFile() { ::close(descriptor); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    const std::string& path() const { return name; }

    std::string text() const {
        std::ifstream in(name, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }

private:
    int descriptor;
    std::string name;
};

}  // namespace Vesk::Fuzz

#endif
