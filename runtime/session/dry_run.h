#ifndef RUNTIME_SESSION_DRY_RUN_H
#define RUNTIME_SESSION_DRY_RUN_H

#include "driver/low_memory.h"
#include "session/runtime.h"
#include "values/recipe.h"

#include <functional>
#include <string>
#include <vector>

// The write requests that the driver would send, without a PLC: the driver builds them and gets made-up replies.

class DryRun {
public:
    DryRun(const DriverLibrary &library, const LinkOptions &options);

    /// One line for each frame: register, memory area, wire address, count and bytes.
    std::vector<std::string> write(const Item &item, const std::vector<quint8> &data);
    std::vector<std::string> writeRecipe(const std::vector<RecipeEntry> &entries);

private:
    bool exchange(std::vector<std::string> &lines);

    const DriverLibrary &library_;
    const LinkOptions    options_;
    LowMemory            memory_;
};

/// "DM:100:2: area 82, wire address 0064 00, count 0002, bytes 00 00 3F C0" for the frame of a write.
std::string writeFrameText(const FRAME_PRO &request);

/// What a dry run says behind its frames: that nothing was sent, and whether the write may change the PLC's mode.
std::string dryRunText(const LinkOptions &options);

#endif
