#ifndef SCREENS_ALARM_READER_H
#define SCREENS_ALARM_READER_H

#include "screens/names.h"

/// Reads the table [alarms.NAME], and reports what is wrong with it.
AlarmRule readAlarm(const std::string &name, const DataNode &table, Names &names);

#endif
