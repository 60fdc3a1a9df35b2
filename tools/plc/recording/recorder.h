#ifndef PLC_RECORDING_RECORDER_H
#define PLC_RECORDING_RECORDER_H

#include "cpu/bytes.h"

#include <asio/ip/tcp.hpp>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

// Writes a recording up to a size, and says on standard error when it ends before the program does. The file is whole
// after every frame.

namespace plc {

/// How a connection ends.
enum class Ending { CLOSED, RESET_BY_CLIENT, RESET_BY_PLC };

class Recorder {
public:
    using Endpoint = asio::ip::tcp::endpoint;

    Recorder(const Recorder &) = delete;
    Recorder &operator=(const Recorder &) = delete;
    virtual ~Recorder() = default;

    /// A connection begins. Its number is not used again after its close().
    virtual void open(unsigned client, const Endpoint &clientEnd, const Endpoint &plcEnd) = 0;

    /// A frame, or bytes that are none: at most some kilobytes. `direction` is < from the client, > to it.
    virtual void add(unsigned client, char direction, const Bytes &bytes) = 0;

    virtual void close(unsigned client, Ending ending) = 0;

protected:
    Recorder(const std::string &path, std::uint64_t maxBytes) : name(path), limit(maxBytes) {}

    bool hasEnded() const { return isAtEnd; }

    /// Whether `size` more bytes are within the limit; if not, the recording ends.
    bool hasRoom(std::size_t size);

    /// To be called after each writing.
    void settle(std::FILE *file);

private:
    void end(const std::string &reason);

    std::string   name;
    std::uint64_t limit;
    std::uint64_t written = 0;
    bool          isAtEnd = false;
};

/// Opens `path` anew: as a capture if it ends in .pcap, otherwise as text. Null, with errno set, if that cannot be.
std::shared_ptr<Recorder> makeRecorder(const std::string &path, std::uint64_t maxBytes);

} // namespace plc

#endif
