#ifndef COMMON_DESCRIPTOR_H
#define COMMON_DESCRIPTOR_H

#include <string>

/// A file descriptor that is closed at the end of the object; negative for none.
class Descriptor {
public:
    explicit Descriptor(int fd) : fd_(fd) {}
    ~Descriptor();
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;

    int get() const { return fd_; }

private:
    int fd_;
};

/// Writes the whole text. Returns false, with errno set, if the rest of it cannot be written.
bool writeAll(int fd, const std::string &text);

#endif
