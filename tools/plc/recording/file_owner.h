#ifndef PLC_RECORDING_FILE_OWNER_H
#define PLC_RECORDING_FILE_OWNER_H

#include <cstdio>
#include <memory>

namespace plc {

struct FileCloser {
    void operator()(std::FILE *file) const { std::fclose(file); }
};

/// An open file that is closed with its owner.
using FileOwner = std::unique_ptr<std::FILE, FileCloser>;

} // namespace plc

#endif
