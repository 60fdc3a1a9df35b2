#include "messages.h"

#include <iostream>

Messages::Messages() : again_(0) {}

void Messages::redirect(Sink sink)
{
    if (!sink_)
        finish();
    sink_ = std::move(sink);
}

void Messages::say(const std::string &line)
{
    if (sink_) {
        sink_(line);
        return;
    }
    if (line == last_) {
        ++again_;
        return;
    }
    finish();
    last_ = line;
    std::cerr << line << std::endl;
}

void Messages::sayAlways(const std::string &line)
{
    if (sink_) {
        sink_(line);
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
    again_ = 0;
    last_.clear();
}
