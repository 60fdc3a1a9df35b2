#ifndef PLC_FINS_FINS_TCP_H
#define PLC_FINS_FINS_TCP_H

#include "cpu/bytes.h"
#include "cpu/end_codes.h"

// FINS/TCP: frames in a byte stream, each behind a 16-byte header: "FINS", length of what follows this field, command,
// error code.

namespace plc {

enum TcpCommand : std::uint32_t {
    TCP_CLIENT_NODE = 0, // node address data send, client to server: client node (4)
    TCP_SERVER_NODE = 1, // node address data send, server to client: client node (4), server node (4)
    TCP_FINS_FRAME  = 2, // frame send: a FINS frame
    TCP_ERROR       = 3, // frame send error notification
    TCP_CONFIRM     = 6  // connection confirmation, server to client: never answered
};

/// Offsets and sizes in bytes.
enum : std::size_t {
    TCP_MAGIC       = 0,  // 4
    TCP_LENGTH_POS  = 4,  // 4
    TCP_COMMAND     = 8,  // 4
    TCP_ERROR_CODE  = 12, // 4
    TCP_BODY        = 16,
    TCP_LENGTH_FROM = 8,   // the length counts from here
    TCP_LENGTH_MAX  = 2020 // of a FINS frame, the longest
};

/// One whole frame as received, header included.
struct TcpFrame {
    Bytes bytes;

    std::uint32_t command() const { return Slice(bytes).get32(TCP_COMMAND); }
    Slice body() const { return Slice(bytes).from(TCP_BODY); }
};

/// Takes frames out of a byte stream however it is cut. Holds no more than what it was given since the last frame.
class FrameAssembler {
public:
    enum class Result { NEED_MORE, FRAME, BAD };

    void append(const std::uint8_t *bytes, std::size_t count);

    /// FRAME: `frame` is the next frame, now removed. BAD: the stream cannot be followed further, `error` says why, and
    /// `frame` holds what there is of the frame. NEED_MORE: neither is touched.
    Result next(TcpFrame *frame, TcpError *error);

    /// Whether part of a frame is waiting for the rest.
    bool hasPartial() const { return !buffer.empty(); }

private:
    Bytes buffer;
};

Bytes makeNodeReply(TcpError error, unsigned clientNode, unsigned serverNode);
Bytes makeErrorNotice(TcpError error);
Bytes makeConfirmation();
Bytes makeFrameSend(const Bytes &finsFrame);

} // namespace plc

#endif
