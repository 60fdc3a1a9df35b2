#include "link/reply_assembler.h"

#include "link/fins_layout.h"

#include <algorithm>
#include <cstring>

static const std::uint8_t MAGIC[TCP_LENGTH] = {'F', 'I', 'N', 'S'};

ReplyAssembler::ReplyAssembler()
    : buffer_(REPLY_LIMIT + TCP_SIZE), used_(0), owed_(0), state_(AssemblyState::INCOMPLETE), frontSize_(0)
{
}

void ReplyAssembler::reset()
{
    used_  = 0;
    owed_  = 0;
    state_ = judge();
}

void ReplyAssembler::beginReply()
{
    while (state() == AssemblyState::COMPLETE)
        dropReply();
    if (state() == AssemblyState::INCOMPLETE && frontSize_ > 0)
        owed_ = frontSize_ - used_;
    used_  = 0;
    state_ = judge();
}

AssemblyState ReplyAssembler::added(std::size_t size)
{
    used_ += size;
    skipOwed();
    state_ = judge();
    return state_;
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

// Sets frontSize_, too.
AssemblyState ReplyAssembler::judge()
{
    frontSize_ = 0;
    if (!std::equal(MAGIC, MAGIC + std::min(used_, sizeof MAGIC), buffer_.begin()))
        return AssemblyState::WRONG_MAGIC;
    if (used_ < TCP_COMMAND)
        return AssemblyState::INCOMPLETE;
    const std::size_t following = get32(buffer_.data() + TCP_LENGTH);
    frontSize_ = TCP_COMMAND + following;
    if (following < TCP_SIZE - TCP_COMMAND)
        return AssemblyState::TOO_SHORT;
    if (following > REPLY_LIMIT - TCP_COMMAND)
        return AssemblyState::TOO_LONG;
    return used_ < frontSize_ ? AssemblyState::INCOMPLETE : AssemblyState::COMPLETE;
}

void ReplyAssembler::dropReply()
{
    removeFront(replySize());
    state_ = judge();
}

void ReplyAssembler::removeFront(std::size_t size)
{
    std::memmove(buffer_.data(), buffer_.data() + size, used_ - size);
    used_ -= size;
}
