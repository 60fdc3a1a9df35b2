#include "table/edit_line.h"

#include "common/usage_error.h"

std::string EditLine::open(std::size_t value)
{
    std::string obstacle = editor_.obstacle(value);
    if (!obstacle.empty())
        return obstacle;
    state_ = State::TYPING;
    value_ = value;
    typed_.clear();
    return "";
}

std::string EditLine::close(const std::string &reason)
{
    state_ = State::CLOSED;
    return reason.empty() ? "" : "nothing was written: " + reason;
}

// Why what is typed cannot be written now; "" if it can.
std::string EditLine::mistake() const
{
    std::string obstacle = editor_.obstacle(value_);
    if (!obstacle.empty())
        return obstacle;
    try {
        editor_.check(value_, typed_.text());
    } catch (const UsageError &error) {
        return error.what();
    }
    return "";
}

std::string EditLine::take(const Keystroke &stroke)
{
    if (state_ == State::ASKING)
        return answer(stroke);
    if (stroke.key == Key::ESCAPE)
        return close("the edit was left");
    if (stroke.key == Key::ENTER && !typed_.text().empty() && mistake().empty()) {
        wanted_ = editor_.check(value_, typed_.text());
        state_  = State::ASKING;
        isSeen_ = false;
    } else {
        typed_.take(stroke);
    }
    return "";
}

// A y that was typed ahead answers a question that nobody has seen.
std::string EditLine::answer(const Keystroke &stroke)
{
    if (stroke.text != "y")
        return close("not confirmed");
    if (!isSeen_)
        return "";
    const std::string reason = mistake();
    if (!reason.empty())
        return close(reason);
    editor_.write(value_, typed_.text());
    return close("");
}

std::string EditLine::line() const
{
    const std::string change = editor_.name(value_) + ": " + editor_.held(value_) + " -> ";
    if (state_ == State::ASKING)
        return "write " + change + wanted_ + "? y/n";
    return change + typed_.text() + "_";
}

std::string EditLine::remark() const
{
    const std::string wrong = typed_.text().empty() ? editor_.obstacle(value_) : mistake();
    if (!wrong.empty())
        return wrong;
    if (state_ == State::ASKING)
        return "y writes it, any other key does not";
    return editor_.allowed(value_) + "; Enter goes on, Esc leaves";
}
