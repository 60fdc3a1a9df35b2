#ifndef TESTS_SUPPORT_TEMPORARY_FILE_H
#define TESTS_SUPPORT_TEMPORARY_FILE_H

#include "support/temporary_folder.h"

#include <string>

// A file, empty at first, that exists as long as the object.
class TemporaryFile {
public:
    TemporaryFile() : path_(folder_.put("file.txt", "")) {}

    const std::string &path() const { return path_; }

    void write(const std::string &text) const { folder_.put("file.txt", text); }

    std::string read() const { return folder_.content("file.txt"); }

private:
    TemporaryFolder folder_;
    std::string     path_;
};

#endif
