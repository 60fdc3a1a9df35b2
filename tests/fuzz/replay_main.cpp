#include "fuzz_input.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

// The main function of the fuzz targets in builds without a fuzzer: replays files and folders of inputs. Options, which
// only a fuzzer understands, are passed over.

namespace {

namespace fs = std::filesystem;

void replay(const fs::path &file)
{
    std::ifstream stream(file, std::ios::binary);
    const std::string content((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
    // A copy of exactly the input's size, so that a sanitizer sees what reads behind it.
    const std::vector<std::uint8_t> bytes(content.begin(), content.end());
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
}

std::vector<fs::path> filesOf(const fs::path &place)
{
    std::vector<fs::path> files;
    if (fs::is_regular_file(place))
        files.push_back(place);
    else if (fs::is_directory(place))
        for (const fs::directory_entry &entry : fs::directory_iterator(place))
            if (entry.is_regular_file())
                files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

} // namespace

int main(int argc, char **argv)
{
    int count = 0;
    for (int i = 1; i < argc; ++i) {
        if (argv[i][0] == '-')
            continue;
        for (const fs::path &file : filesOf(argv[i])) {
            replay(file);
            ++count;
        }
    }
    if (count == 0) {
        std::cerr << argv[0] << ": no input; name files or folders of inputs, such as tests/fuzz/corpus/session\n";
        return 2;
    }
    std::cout << count << " inputs replayed\n";
    return 0;
}
