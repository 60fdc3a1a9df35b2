#ifndef TESTS_E2E_PANEL_FILES_H
#define TESTS_E2E_PANEL_FILES_H

#include "panel_run.h"

#include <dirent.h>
#include <fstream>
#include <iterator>
#include <string>

// Files for a run of the panel, in a folder of their own that goes with the object.
class PanelFiles {
public:
    PanelFiles()
    {
        std::string form = ::testing::TempDir() + "panel_files_XXXXXX";
        folder_ = std::string(mkdtemp(form.data())) + "/";
    }

    ~PanelFiles()
    {
        for (const std::string &name : names())
            unlink(path(name).c_str());
        rmdir(folder_.c_str());
    }

    PanelFiles(const PanelFiles &) = delete;
    PanelFiles &operator=(const PanelFiles &) = delete;

    std::string path(const std::string &name) const { return folder_ + name; }

    // Writes a file and returns its path.
    std::string put(const std::string &name, const std::string &text) const
    {
        std::ofstream(path(name), std::ios::binary) << text;
        return path(name);
    }

    std::string content(const std::string &name) const
    {
        std::ifstream file(path(name), std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }

private:
    Words names() const
    {
        Words found;
        DIR *const open = opendir(folder_.c_str());
        while (const dirent *entry = open ? readdir(open) : nullptr)
            found.push_back(entry->d_name);
        if (open)
            closedir(open);
        return found;
    }

    std::string folder_;
};

#endif
