#include "commands/exit_codes.h"

#include "session/write_report.h"

int exitCode(const WriteReport &report)
{
    switch (report.verdict()) {
    case WriteVerdict::UNKNOWN:
        return EXIT_NO_LINK;
    case WriteVerdict::NOT_AS_ASKED:
        return EXIT_REFUSED;
    case WriteVerdict::DONE:
        break;
    }
    return EXIT_DONE;
}
