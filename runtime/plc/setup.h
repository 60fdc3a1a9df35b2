#ifndef RUNTIME_PLC_SETUP_H
#define RUNTIME_PLC_SETUP_H

#include "fins_runtime/config.h"
#include "project/project.h"
#include "session/runtime.h"

#include <memory>

// A configuration that was checked, and the driver's copy that serves it.

namespace fins {

/// What the project says of the PLC, its tags and recipes included.
Config configOf(const ProjectPlc &plc);

struct Setup {
    /// Throws ConfigError with all that is wrong.
    explicit Setup(const Config &config);
    Setup(const Setup &) = delete;
    Setup &operator=(const Setup &) = delete;

    /// Throws NameError.
    const Recipe &recipe(const std::string &name) const;

    std::unique_ptr<DriverLibrary> library;
    TagBook                        book;
    std::vector<Recipe>            recipes;
    LinkOptions                    link;
    std::size_t                    queueLimit;
    std::function<std::chrono::system_clock::time_point()> utc;
    std::function<TimePoint()>     steady;
};

} // namespace fins

#endif
