#ifndef DATA_WRITE_COMPLETION_H
#define DATA_WRITE_COMPLETION_H

#include "omron_fins_ethernet.h"

// The end of a job, by its kind.

/// Kind of the job in progress. 1 is not used.
enum JobType {
    JOB_NONE           = 0,
    JOB_WRITE          = 2,
    JOB_CONDITION_READ = 3,
    JOB_POLL           = 4,
    JOB_RECIPE_WRITE   = 5,
    JOB_RECIPE_READ    = 6
};

/// Bytes of the runtime's shared block, 1 while the runtime requests the transfer.
enum RecipeFlag {
    RECIPE_WRITE_FLAG = 60115,
    RECIPE_READ_FLAG  = 60116
};

/// Closes the job in progress, as failed if the link was dropped:
///   write              settles its values in the data image and leaves the queue
///   conditional read   reports its end and leaves the queue; a failure empties the queue
///   poll               the block moves to the end of the poll list
///   recipe             the next block is due; after the last, or on failure, the request flag is cleared
void dealListWhenFinish();

/// Settles a finished write piece in the data image: `result` 1, the written values become the PLC's; else they are
/// dropped, and words that change back are reported. A bit write reports once per bit, with the piece's first address.
void _write_FailOrSuc(qint32 requestTag, QString regType, qint32 address, qint32 count, qint32 result);

#endif
