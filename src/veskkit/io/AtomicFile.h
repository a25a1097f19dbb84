#ifndef VESK_VESKKIT_IO_ATOMICFILE_H
#define VESK_VESKKIT_IO_ATOMICFILE_H

#include <memory>
#include <ostream>
#include <string>
#include <string_view>

namespace Vesk::Kit {

/// Writes a file that appears whole or not at all.
///
/// What is written goes to a temporary file in the same folder; `commit` flushes it to the disk
/// and renames it into place. Without `commit` the temporary file is removed and an existing file
/// stays as it was. A symbolic link is followed and its target replaced; an existing file's
/// permissions are kept. Devices, pipes and paths that name an open descriptor (/dev/stdout) are
/// written through.
///
/// Every failure is an OutputError "<path>: <reason>".
class AtomicFile {
public:
    /// Prepares writing to `path`. OutputError for a directory, a missing folder, a file or folder
    /// that may not be written.
    explicit AtomicFile(const std::string& path);
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;
    ~AtomicFile();

    /// What is written here ends up in the file. A failed write sets its badbit and is reported by
    /// `commit` too.
    std::ostream& stream();

    /// Puts the file in place; nothing may be written afterwards. Called twice: OutputError.
    void commit();

private:
    class Target;
    std::unique_ptr<Target> target;
};

/// Writes `text` to `path` by way of an AtomicFile. OutputError as that.
void writeWhole(const std::string& path, std::string_view text);

}  // namespace Vesk::Kit

#endif
