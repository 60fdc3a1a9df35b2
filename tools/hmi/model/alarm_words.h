#ifndef HMI_MODEL_ALARM_WORDS_H
#define HMI_MODEL_ALARM_WORDS_H

#include "model/alarm_book.h"

#include <string>

/// How an alarm stands, in words: "active, not acknowledged"; "unknown, was active, acknowledged".
std::string alarmWords(const AlarmStatus &status);

/// What happened to it: "came", "went".
const char *text(AlarmEvent::Kind kind);

#endif
