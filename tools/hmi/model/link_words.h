#ifndef HMI_MODEL_LINK_WORDS_H
#define HMI_MODEL_LINK_WORDS_H

#include <fins_runtime/values.h>

#include <string>

// The state of a link in words, as the banner says it.

/// "online since 14:03:12", or "waiting since 14:03:12, next attempt in 3 s: REASON". Times of day are local.
std::string linkWords(const fins::State &state, std::chrono::system_clock::time_point now);

/// "14:03:12" of the local time zone.
std::string clockText(std::chrono::system_clock::time_point time);

#endif
