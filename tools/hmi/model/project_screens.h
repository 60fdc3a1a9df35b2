#ifndef HMI_MODEL_PROJECT_SCREENS_H
#define HMI_MODEL_PROJECT_SCREENS_H

#include "model/station.h"

/// The screens and alarms of a project file, of which the stations have the tags and recipes. Throws fins::ConfigError with
/// all that is wrong.
ScreenBook readProjectScreens(const std::string &file, const std::vector<Station *> &stations);

#endif
