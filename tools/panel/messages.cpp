#include "messages.h"

#include <iostream>

Messages::Messages() : again_(0) {}

void Messages::redirect(Sink sink)
{
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

void Messages::finish()
{
    if (again_ > 0)
        std::cerr << "(the last message came " << again_ << (again_ == 1 ? " more time)" : " more times)") << std::endl;
    again_ = 0;
    last_.clear();
}
