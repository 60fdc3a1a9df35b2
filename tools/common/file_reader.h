#ifndef FINS_COMMON_FILE_READER_H
#define FINS_COMMON_FILE_READER_H

#include <cstddef>
#include <string>

/// What a file holds, or what is wrong with it: one of the two is empty, both for an empty file.
struct FileContent {
    std::string text;
    std::string problem; // what is wrong and how to mend it, without the file's name
};

/// Reads a regular file of at most `maxBytes`. A pipe, a device or a folder, which may never end, is not read.
FileContent readWholeFile(const std::string &file, std::size_t maxBytes);

#endif
