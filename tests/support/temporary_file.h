#ifndef TESTS_SUPPORT_TEMPORARY_FILE_H
#define TESTS_SUPPORT_TEMPORARY_FILE_H

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <unistd.h>

// A file that exists as long as the object.
class TemporaryFile {
public:
    TemporaryFile()
    {
        char chosen[] = "test_file_XXXXXX";
        const int made = mkstemp(chosen);
        if (made < 0)
            throw std::runtime_error("no temporary file");
        close(made);
        name = chosen;
    }

    TemporaryFile(const TemporaryFile &) = delete;
    TemporaryFile &operator=(const TemporaryFile &) = delete;

    ~TemporaryFile() { unlink(name.c_str()); }

    const std::string &path() const { return name; }

    void write(const std::string &text) const { std::ofstream(name, std::ios::binary | std::ios::trunc) << text; }

    std::string read() const
    {
        std::ifstream stream(name, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
    }

private:
    std::string name;
};

#endif
