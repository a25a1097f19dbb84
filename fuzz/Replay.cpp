// Runs a target on files and on all files below folders: usage: fuzz_TARGET_replay PATH...
// What the fuzzer does with a corpus, for any compiler.

#include "Entry.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

namespace fs = std::filesystem;

int main(int argc, char** argv) {
    std::vector<std::string> files;
    for (int i = 1; i < argc; ++i) {
        if (!fs::is_directory(argv[i])) {
            files.emplace_back(argv[i]);
            continue;
        }
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(argv[i])) {
            if (entry.is_regular_file()) files.push_back(entry.path().string());
        }
    }
    std::sort(files.begin(), files.end());
    for (const std::string& file : files) {
        std::ifstream in(file, std::ios::binary);
        if (!in) {
            std::cerr << file << ": cannot be read\n";
            return 1;
        }
        const std::string text{std::istreambuf_iterator<char>(in), {}};
        std::cerr << file << '\n';
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
    }
    std::cerr << files.size() << " inputs\n";
    return files.empty() ? 1 : 0;
}
