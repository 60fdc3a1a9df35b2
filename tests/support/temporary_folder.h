#ifndef TESTS_SUPPORT_TEMPORARY_FOLDER_H
#define TESTS_SUPPORT_TEMPORARY_FOLDER_H

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <system_error>

// A folder of the test's own among the temporary ones. It goes with the object, and all that is in it.
class TemporaryFolder {
public:
    TemporaryFolder()
    {
        std::string form = (std::filesystem::temp_directory_path() / "fins_test_XXXXXX").string();
        if (mkdtemp(form.data()) == nullptr)
            throw std::runtime_error("no temporary folder " + form);
        path_ = form + "/";
    }

    TemporaryFolder(const TemporaryFolder &) = delete;
    TemporaryFolder &operator=(const TemporaryFolder &) = delete;

    ~TemporaryFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    // Of the folder itself, with a slash at its end.
    const std::string &path() const { return path_; }

    std::string path(const std::string &name) const { return path_ + name; }

    // Writes a file and returns its path.
    std::string put(const std::string &name, const std::string &text) const
    {
        std::ofstream(path(name), std::ios::binary) << text;
        return path(name);
    }

    // What a file holds; "" if there is none.
    std::string content(const std::string &name) const
    {
        std::ifstream file(path(name), std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }

private:
    std::string path_;
};

#endif
