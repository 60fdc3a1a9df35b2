#ifndef PANEL_PLANT_PLANT_EDITS_H
#define PANEL_PLANT_PLANT_EDITS_H

#include "base/messages.h"
#include "plant/plant.h"
#include "watch/watch_editor.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

// Edits of the values of several PLCs.

/// The edits of one PLC of a plant. An edit is for now: what was not sent when the link is lost is taken back.
class PlantEdits : public EditWay {
public:
    PlantEdits(Plant &plant, std::size_t plc) : plant_(plant), plc_(plc) {}

    std::string obstacle() const override;
    void edit(const TagWrite &write, const std::string &text) override;
    std::string fateOfEdit() const override;

    /// To be called with every change of the link's state.
    void noteState(const fins::State &state);

    /// Waits for nothing: an edit under way is over, and what is known of it is said. Returns what became of all of them.
    std::vector<fins::Fate> end(Messages &messages);

private:
    Plant                    &plant_;
    const std::size_t         plc_;
    fins::Operation           operation_; // the latest
    bool                      isOpen_ = false;
    std::vector<fins::Fate>   fates_;     // of those that are over
    std::string               line_;      // that tells of the latest of them
};

/// The values of all PLCs, numbered one after the other.
class PlantEditor : public ValueEditor {
public:
    void add(std::unique_ptr<WatchEditor> editor);

    std::string name(std::size_t value) const override;
    std::string held(std::size_t value) const override;
    std::string allowed(std::size_t value) const override;
    std::string obstacle(std::size_t value) const override;
    std::string check(std::size_t value, const std::string &text) const override;
    void write(std::size_t value, const std::string &text) override;

    std::vector<ValueRow> rows() const;

private:
    struct Place {
        WatchEditor *editor;
        std::size_t  value; // of it
    };

    std::vector<std::unique_ptr<WatchEditor>> editors_;
    std::vector<Place>                        places_; // of the values
};

#endif
