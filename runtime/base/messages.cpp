#include "base/messages.h"

#include <algorithm>
#include <iostream>

Messages::Messages(Watch now) : now_(std::move(now)), countedAt_(now_()) {}

void Messages::redirect(Sink sink, bool keeps)
{
    if (!sink_)
        finish();
    sink_  = std::move(sink);
    keeps_ = keeps;
}

bool Messages::takeToken()
{
    const TimePoint now = now_();
    const std::chrono::duration<double> elapsed = now - countedAt_;
    tokens_    = std::min<double>(BURST, tokens_ + elapsed.count() * PER_SECOND);
    countedAt_ = now;
    if (tokens_ < 1)
        return false;
    tokens_ -= 1;
    return true;
}

void Messages::say(const std::string &text, const std::string &hint)
{
    if (sink_) {
        sink_({text, hint, false});
        return;
    }
    if (text == last_) {
        ++again_;
        return;
    }
    if (!takeToken()) {
        ++leftOut_;
        return;
    }
    finish();
    last_ = text;
    std::cerr << text << std::endl;
    if (!hint.empty())
        std::cerr << "hint: " << hint << std::endl;
}

void Messages::sayCourse(const std::string &text, const std::string &hint)
{
    if (!hushed_)
        say(text, hint);
}

void Messages::sayAlways(const std::string &line)
{
    if (sink_) {
        sink_({line, "", true});
        if (keeps_)
            kept_.push_back(line);
        return;
    }
    finish();
    std::cerr << line << std::endl;
}

void Messages::finish()
{
    if (sink_)
        return;
    for (const std::string &line : kept_)
        std::cerr << line << std::endl;
    kept_.clear();
    if (again_ > 0)
        std::cerr << "(the last message came " << again_ << (again_ == 1 ? " more time)" : " more times)") << std::endl;
    if (leftOut_ > 0)
        std::cerr << "(" << leftOut_ << (leftOut_ == 1 ? " message was" : " messages were")
                  << " left out: too many in a short time)" << std::endl;
    again_   = 0;
    leftOut_ = 0;
    last_.clear();
}
