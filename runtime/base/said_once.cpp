#include "base/said_once.h"

#include <algorithm>

bool SaidOnce::isNew(const std::string &text)
{
    if (std::find(said_.begin(), said_.end(), text) != said_.end())
        return false;
    said_.push_back(text);
    if (said_.size() > KEPT)
        said_.pop_front();
    return true;
}

void SaidOnce::forget(const std::string &start)
{
    const auto begins = [&start](const std::string &text) { return text.compare(0, start.size(), start) == 0; };
    said_.erase(std::remove_if(said_.begin(), said_.end(), begins), said_.end());
}
