#ifndef POLL_POLL_LIST_H
#define POLL_POLL_LIST_H

#include "omron_fins_ethernet.h"

// What the runtime watches, as marks in the data image.

/// Marks words (bit 0 of wordMonitor) or bits (in bitMonitor) as watched, creating missing records. Returns 0.
qint32 _setDataAreaMonitorFlag(qint32 requestTag, QString regType, qint32 address, qint32 count);

#endif
