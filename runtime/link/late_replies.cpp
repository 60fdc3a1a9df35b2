#include "link/late_replies.h"

void LateReplies::unanswered(std::uint8_t sid)
{
    if (owed_[sid] < 255)
        ++owed_[sid];
}

bool LateReplies::settle(std::uint8_t sid)
{
    if (owed_[sid] == 0)
        return false;
    --owed_[sid];
    return true;
}
