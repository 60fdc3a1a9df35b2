#ifndef HMI_MODEL_SAVER_H
#define HMI_MODEL_SAVER_H

#include <QtCore/QThreadPool>

#include <functional>
#include <mutex>
#include <string>
#include <vector>

// Files that the panel writes: journals, trends, recipes that were read. Each is a new one, so that no file is ever
// replaced, and is written by a thread of its own: a slow disk stops nothing.

class Saver {
public:
    /// `folder` is where the files go; "": the current one.
    explicit Saver(std::string folder);

    /// The file's name is `name`, the time of day and `ending`: journal-20261122-140312.csv. `make` is called on another
    /// thread and gives the content; `onDone` in deliver(), once, with a line for people. Calls are carried out in their
    /// order, all before the object is gone; then `onDone` may be left out.
    void save(const std::string &name, const std::string &ending, std::function<std::string()> make,
              std::function<void(const std::string &line)> onDone);

    /// Tells of the files that are done since the last call.
    void deliver();

private:
    std::string folder_;
    std::mutex  mutex_; // guards done_
    std::vector<std::function<void()>> done_;
    QThreadPool pool_;  // goes first, so that its thread finds the others
};

/// Writes a new file and says in a line what became of it; a file that could not be written whole is gone again.
std::string writeNewFile(const std::string &path, const std::string &ending, const std::string &content);

#endif
