#ifndef PANEL_COMMANDS_NO_ANSWER_H
#define PANEL_COMMANDS_NO_ANSWER_H

#include "session/runtime.h"

/// Says in one line on standard error why no answer came; returns the program's exit code.
int noAnswer(Runtime &runtime, Millis giveUp);

#endif
