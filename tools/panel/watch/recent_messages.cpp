#include "watch/recent_messages.h"

#include <algorithm>

void RecentMessages::add(const Message &message)
{
    const auto known = std::find_if(entries_.begin(), entries_.end(), [&message](const Entry &entry) {
        return entry.message.text == message.text && entry.message.isAlways == message.isAlways;
    });
    if (known != entries_.end()) {
        ++known->count;
        entries_.splice(entries_.end(), entries_, known);
        return;
    }
    entries_.push_back({message, 1});
    if (entries_.size() <= KEPT)
        return;
    dropped_ += entries_.front().message.isAlways ? 0 : 1;
    entries_.pop_front();
}

std::string RecentMessages::text(const Entry &entry)
{
    return entry.message.text + (entry.count > 1 ? " (" + std::to_string(entry.count) + " times)" : "");
}

std::vector<std::string> RecentMessages::lines(std::size_t most) const
{
    std::vector<std::string> lines;
    for (auto entry = entries_.rbegin(); entry != entries_.rend() && lines.size() < most; ++entry) {
        if (!entry->message.hint.empty() && lines.size() + 2 <= most)
            lines.push_back("hint: " + entry->message.hint);
        lines.push_back(text(*entry));
    }
    std::reverse(lines.begin(), lines.end());
    return lines;
}

void RecentMessages::sayTo(Messages &messages) const
{
    if (dropped_ > 0)
        messages.say("(" + std::to_string(dropped_) + " earlier " + (dropped_ == 1 ? "message is" : "messages are")
                     + " not shown)");
    for (const Entry &entry : entries_) {
        if (!entry.message.isAlways)
            messages.say(text(entry), entry.message.hint);
    }
}
