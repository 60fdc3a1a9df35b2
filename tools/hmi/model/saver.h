#ifndef HMI_MODEL_SAVER_H
#define HMI_MODEL_SAVER_H

#include <QtCore/QThreadPool>

#include <functional>
#include <string>

// Files that the panel writes: journals, trends, recipes that were read. Each is a new one, so that no file is ever
// replaced, and is written by a thread of its own: a slow disk stops nothing.

class Saver {
public:
    /// `folder` is where the files go; "": the current one.
    explicit Saver(std::string folder);

    /// The file's name is `name`, the time of day and `ending`: journal-20261122-140312.csv. `make` is called on another
    /// thread and gives the content; `onDone` on the window's, once, with a line for people. Calls are carried out in
    /// their order, all before the object is gone; then `onDone` may be left out.
    void save(const std::string &name, const std::string &ending, std::function<std::string()> make,
              std::function<void(const std::string &line)> onDone);

private:
    std::string folder_;
    QThreadPool pool_;
};

/// Writes a new file and says in a line what became of it; a file that could not be written whole is gone again.
std::string writeNewFile(const std::string &path, const std::string &ending, const std::string &content);

#endif
