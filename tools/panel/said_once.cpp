#include "said_once.h"

#include <algorithm>

bool SaidOnce::isNew(const std::string &text)
{
    const auto [at, inserted] = said_.insert(text);
    if (!inserted)
        return false;
    order_.push_back(at);
    if (order_.size() > KEPT) {
        said_.erase(order_.front());
        order_.pop_front();
    }
    return true;
}

void SaidOnce::forget(const std::string &start)
{
    const auto begins = [&start](const std::string &text) { return text.compare(0, start.size(), start) == 0; };
    const auto gone = [&begins](std::set<std::string>::const_iterator at) { return begins(*at); };
    order_.erase(std::remove_if(order_.begin(), order_.end(), gone), order_.end());
    for (auto at = said_.lower_bound(start); at != said_.end() && begins(*at);)
        at = said_.erase(at);
}
