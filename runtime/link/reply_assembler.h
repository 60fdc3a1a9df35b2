#ifndef RUNTIME_LINK_REPLY_ASSEMBLER_H
#define RUNTIME_LINK_REPLY_ASSEMBLER_H

#include <cstddef>
#include <cstdint>
#include <vector>

// Bytes of a connection in, one FINS/TCP reply out, whatever the segmentation. A reply starts with "FINS" and a 32-bit
// big-endian number of the bytes that follow that number. One reply belongs to one request: what else has arrived when
// the next request begins is left over and never becomes its reply.

enum class AssemblyState {
    INCOMPLETE,  // more bytes are needed
    COMPLETE,    // reply() and replySize() hold one reply
    WRONG_MAGIC, // the bytes do not start with "FINS"
    TOO_SHORT,   // the length leaves no room for the FINS/TCP command and error code
    TOO_LONG     // the length is above REPLY_LIMIT
};

class ReplyAssembler {
public:
    /// Size in bytes of the longest reply that is assembled, the FINS/TCP header included.
    static constexpr std::size_t REPLY_LIMIT = 2048;

    ReplyAssembler();

    /// Starts the next reply. Complete replies left over are dropped; of a reply left over in part, the rest is skipped
    /// when it arrives, unless the bytes that arrive begin a reply of their own.
    void beginReply();

    /// Forgets everything: for a new connection.
    void reset();

    /// Room for the next bytes, at least one byte; what was written there is then accounted for by added().
    std::uint8_t *room() { return buffer_.data() + used_; }
    std::size_t roomSize() const { return buffer_.size() - used_; }
    AssemblyState added(std::size_t size);

    /// The state of the bytes so far, which changes only through the functions above and below.
    AssemblyState state() const { return state_; }

    /// Drops the complete reply at the front: the next one becomes the reply.
    void dropReply();

    /// Valid while state() is COMPLETE, until the next call that changes something.
    const std::uint8_t *reply() const { return buffer_.data(); }
    std::size_t replySize() const { return state_ == AssemblyState::COMPLETE ? frontSize_ : 0; }

    /// Bytes of an incomplete reply as its length field says; 0 until that has come.
    std::size_t expectedSize() const { return frontSize_; }

    /// Bytes that came behind the complete reply, or of the incomplete one.
    std::size_t leftOver() const { return used_ - replySize(); }

private:
    AssemblyState judge();
    void removeFront(std::size_t size);
    void skipOwed();

    std::vector<std::uint8_t> buffer_;
    std::size_t used_; // bytes in the buffer
    std::size_t owed_; // bytes still to come of a reply that was given up
    AssemblyState state_;
    std::size_t frontSize_; // of the reply at the front as its length field says; 0 until that has arrived
};

#endif
