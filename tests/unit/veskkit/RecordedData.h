#ifndef VESK_TESTS_UNIT_VESKKIT_RECORDEDDATA_H
#define VESK_TESTS_UNIT_VESKKIT_RECORDEDDATA_H

#include <cstdlib>
#include <filesystem>
#include <string>

namespace Vesk::Test {

/// A file of recorded traces, in VESK_DATA_DIR or the folder beside the repository; "" where it is
/// not there.
inline std::string dataFile(const std::string& name) {
    const char* folder = std::getenv("VESK_DATA_DIR");
    const std::filesystem::path path =
        std::filesystem::path(folder != nullptr ? folder : VESK_DEFAULT_DATA_DIR) / name;
    return std::filesystem::exists(path) ? path.string() : "";
}

}  // namespace Vesk::Test

#endif
