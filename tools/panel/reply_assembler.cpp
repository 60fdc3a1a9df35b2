#include "reply_assembler.h"

#include <algorithm>
#include <cstring>

// FINS/TCP header: offset, size in bytes, field. Big-endian.
enum {
    TCP_MAGIC   = 0, // 4  "FINS"
    TCP_LENGTH  = 4, // 4  number of bytes behind this field
    TCP_COMMAND = 8, // 4  a reply's command; the error code (4) follows
    TCP_SIZE    = 16
};

static const std::uint8_t MAGIC[TCP_LENGTH] = {'F', 'I', 'N', 'S'};

ReplyAssembler::ReplyAssembler() : buffer_(REPLY_LIMIT + TCP_SIZE), used_(0), owed_(0) {}

void ReplyAssembler::reset()
{
    used_ = 0;
    owed_ = 0;
}

void ReplyAssembler::beginReply()
{
    while (state() == AssemblyState::COMPLETE)
        dropReply();
    if (state() == AssemblyState::INCOMPLETE && used_ >= TCP_COMMAND)
        owed_ = TCP_COMMAND + followingBytes() - used_;
    used_ = 0;
}

AssemblyState ReplyAssembler::added(std::size_t size)
{
    used_ += size;
    skipOwed();
    return state();
}

// The rest of a reply that was given up may come late or never.
void ReplyAssembler::skipOwed()
{
    if (owed_ == 0 || used_ == 0)
        return;
    if (std::equal(MAGIC, MAGIC + std::min(used_, sizeof MAGIC), buffer_.begin())) {
        owed_ = 0;
        return;
    }
    const std::size_t skipped = std::min(owed_, used_);
    removeFront(skipped);
    owed_ -= skipped;
}

AssemblyState ReplyAssembler::state() const
{
    if (!std::equal(MAGIC, MAGIC + std::min(used_, sizeof MAGIC), buffer_.begin()))
        return AssemblyState::WRONG_MAGIC;
    if (used_ < TCP_COMMAND)
        return AssemblyState::INCOMPLETE;
    if (followingBytes() < TCP_SIZE - TCP_COMMAND)
        return AssemblyState::TOO_SHORT;
    if (followingBytes() > REPLY_LIMIT - TCP_COMMAND)
        return AssemblyState::TOO_LONG;
    return used_ < TCP_COMMAND + followingBytes() ? AssemblyState::INCOMPLETE : AssemblyState::COMPLETE;
}

void ReplyAssembler::dropReply()
{
    removeFront(replySize());
}

std::size_t ReplyAssembler::replySize() const
{
    return state() == AssemblyState::COMPLETE ? TCP_COMMAND + followingBytes() : 0;
}

std::uint32_t ReplyAssembler::followingBytes() const
{
    std::uint32_t length = 0;
    for (std::size_t i = TCP_LENGTH; i < TCP_COMMAND; ++i)
        length = length << 8 | buffer_[i];
    return length;
}

void ReplyAssembler::removeFront(std::size_t size)
{
    std::memmove(buffer_.data(), buffer_.data() + size, used_ - size);
    used_ -= size;
}
