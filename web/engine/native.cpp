// The engine in a native program, for tests that compare the two: reads a request's name, its
// arguments and the name of a file (or nothing) from three lines of standard input, and writes the
// reply's JSON and the number of its file's bytes, a line each, and those bytes.
#include "Engine.h"

#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

int main() {
    Vesk::Studio::Engine engine;
    std::string request;
    std::string arguments;
    std::string name;
    while (std::getline(std::cin, request) && std::getline(std::cin, arguments) &&
           std::getline(std::cin, name)) {
        std::string bytes;
        if (!name.empty()) {
            std::ifstream in(name, std::ios::binary);
            bytes.assign(std::istreambuf_iterator<char>(in), {});
        }
        const Vesk::Studio::Reply reply = engine.call(request, arguments, bytes);
        std::cout << reply.json << '\n' << reply.file.size() << '\n' << reply.file << std::flush;
    }
}
