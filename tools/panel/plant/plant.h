#ifndef PANEL_PLANT_PLANT_H
#define PANEL_PLANT_PLANT_H

#include "common/descriptor.h"
#include "fins_runtime/plc.h"

#include <poll.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

// Several PLCs at once, each through an object of the library of its own: what they tell comes in one place, on one
// thread.

/// A PLC, and what is to be watched of it: tags and items by their full names, press.Level, press.DM:100.
struct PlantPlc {
    fins::Config             config;
    std::vector<std::string> items;
};

class Plant {
public:
    using SamplesCall = std::function<void(std::size_t plc, const fins::Samples &samples)>;
    using StateCall   = std::function<void(std::size_t plc, const fins::State &state)>;
    using MessageCall = std::function<void(const std::string &line)>;

    /// Begins to connect to all of them, and waits for none. Throws what Plc::open throws, and NameError for the items.
    explicit Plant(const std::vector<PlantPlc> &plcs);
    Plant(const Plant &) = delete;
    Plant &operator=(const Plant &) = delete;

    // The calls come in step(), the first ones with what is known by then. They number the PLCs as the constructor
    // got them.

    /// The samples of a PLC, numbered as its items; first one of each.
    void onSamples(SamplesCall call) { samplesCall_ = std::move(call); }

    /// The state of a PLC now, and every change.
    void onState(StateCall call) { stateCall_ = std::move(call); }

    /// What happens on the links and to writes, with the name of the PLC before it where there are several. What
    /// happened while the PLC was being opened may be left out; its state tells it.
    void onMessage(MessageCall call) { messageCall_ = std::move(call); }

    /// Delivers what waits. Waits for it until `until` at the longest; a descriptor of `others` that is ready ends
    /// the wait, and so does a signal that ends the program.
    void step(std::chrono::steady_clock::time_point until, std::vector<pollfd> &others);

    /// The PLCs that have not `answered`, and why, as far as that is known: "press at 192.0.2.1: ..."; "" for none.
    std::string silent(const std::vector<bool> &answered) const;

    std::size_t size() const { return plcs_.size(); }
    const std::string &name(std::size_t plc) const { return names_[plc]; }
    fins::Plc &plc(std::size_t plc) { return plcs_[plc]; }

private:
    void open(std::size_t number, const PlantPlc &plc, const std::string &prefix);
    void deliver();

    SamplesCall               samplesCall_;
    StateCall                 stateCall_;
    MessageCall               messageCall_;
    std::vector<std::string>  names_;
    std::vector<std::string>  hosts_;
    std::vector<fins::Plc>    plcs_;
    std::vector<fins::Watch>  watches_;
    std::vector<fins::Handle> listeners_;
    Descriptor                ready_; // readable while a PLC has something to tell
};

#endif
