// SPDX-License-Identifier: GPL-3.0-or-later
// Runs a fuzz target once over every file of the folders or files named on
// the command line, for compilers without libFuzzer.
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

namespace {

void RunFile(const std::filesystem::path &path)
{
    std::ifstream in(path, std::ios::binary);
    const std::vector<char> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(bytes.data()), bytes.size());
}

} // namespace

int main(int argc, char *argv[])
{
    int runs = 0;
    for (int i = 1; i < argc; ++i) {
        const std::filesystem::path arg(argv[i]);
        if (std::filesystem::is_directory(arg)) {
            for (const auto &entry : std::filesystem::directory_iterator(arg)) {
                if (entry.is_regular_file()) {
                    RunFile(entry.path());
                    ++runs;
                }
            }
        } else {
            RunFile(arg);
            ++runs;
        }
    }
    std::cout << "Executed " << runs << " inputs\n";
    return runs > 0 ? 0 : 1;
}
