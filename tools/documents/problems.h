#ifndef DOCUMENTS_PROBLEMS_H
#define DOCUMENTS_PROBLEMS_H

#include <cstddef>
#include <string>
#include <vector>

// What is wrong in a file that the user wrote: every problem with its place, so that all can be mended at once.

struct Place {
    int line   = 0; // from 1; 0: the file as a whole
    int column = 0; // from 1; 0: the line as a whole
};

class Problems {
public:
    void add(const std::string &file, Place place, const std::string &text);

    struct Entry {
        std::string file;
        Place       place;
        std::string text;
    };

    bool any() const { return !entries_.empty(); }

    /// In the order of the places within a file.
    std::vector<Entry> entries() const;

    /// "FILE:LINE:COL: text", in the order of the places within a file.
    std::vector<std::string> lines() const;

    /// Throws UsageError with the first problem, if there is one. The number of the others has `hint` behind it, which
    /// tells how to see them.
    void refuse(const std::string &hint = std::string()) const;

private:
    std::vector<Entry> entries_;
};

/// Ten times the longest recipe, and as many tags as nobody has.
constexpr std::size_t FILE_MOST_BYTES = 2UL * 1024 * 1024;

/// Reads a whole file of FILE_MOST_BYTES at most. Throws UsageError, which names the file and the reason.
std::string readFile(const std::string &file);

#endif
