#include "model/link_words.h"

#include <ctime>

std::string clockText(std::chrono::system_clock::time_point time)
{
    const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
    std::tm local = {};
    localtime_r(&seconds, &local);
    char text[16];
    return std::string(text, std::strftime(text, sizeof text, "%H:%M:%S", &local));
}

std::string linkWords(const fins::State &state, std::chrono::system_clock::time_point now)
{
    std::string words = std::string(fins::text(state.phase)) + " since " + clockText(state.since);
    if (state.phase == fins::Phase::WAITING) {
        const auto left = std::chrono::ceil<std::chrono::seconds>(state.nextAttempt - now).count();
        words += ", next attempt " + (left > 0 ? "in " + std::to_string(left) + " s" : "now");
    }
    const bool isDown = state.phase != fins::Phase::ONLINE && !state.reason.empty();
    return isDown ? words + ": " + state.reason : words;
}
