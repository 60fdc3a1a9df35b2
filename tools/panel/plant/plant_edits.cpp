#include "plant/plant_edits.h"

#include "watch/watch_writes.h"

#include <iterator>

// ---- One PLC -----------------------------------------------------------------------------------------------------

std::string PlantEdits::obstacle() const
{
    if (isOpen_)
        return "a write before is not settled yet; one goes out at a time";
    if (plant_.plc(plc_).state().phase != fins::Phase::ONLINE)
        return "the PLC does not answer; a value can be edited while the link is up";
    return "";
}

void PlantEdits::edit(const TagWrite &write, const std::string &text)
{
    isOpen_    = true;
    operation_ = plant_.plc(plc_).write({{write.tag.name, fins::Value(text)}}, [this](const fins::Outcomes &outcomes) {
        fates_.push_back(outcomes.front().fate);
        line_   = outcomes.front().text;
        isOpen_ = false;
    });
}

std::string PlantEdits::fateOfEdit() const
{
    if (isOpen_)
        return "writing";
    return fates_.empty() ? "" : fateWord(fates_.back());
}

void PlantEdits::noteState(const fins::State &state)
{
    if (isOpen_ && state.phase != fins::Phase::ONLINE && state.phase != fins::Phase::SILENT)
        operation_.cancel();
}

// What ends with the link comes without a message of its own.
std::vector<fins::Fate> PlantEdits::end(Messages &messages)
{
    if (isOpen_) {
        plant_.plc(plc_).close();
        while (plant_.plc(plc_).dispatch()) {
        }
        messages.sayAlways(plant_.name(plc_) + ": " + line_);
    }
    return fates_;
}

// ---- All PLCs ----------------------------------------------------------------------------------------------------

void PlantEditor::add(std::unique_ptr<WatchEditor> editor)
{
    for (std::size_t i = 0; i < editor->size(); ++i)
        places_.push_back({editor.get(), i});
    editors_.push_back(std::move(editor));
}

std::string PlantEditor::name(std::size_t value) const
{
    return places_[value].editor->name(places_[value].value);
}

std::string PlantEditor::held(std::size_t value) const
{
    return places_[value].editor->held(places_[value].value);
}

std::string PlantEditor::allowed(std::size_t value) const
{
    return places_[value].editor->allowed(places_[value].value);
}

// The library writes what can be named.
std::string PlantEditor::obstacle(std::size_t value) const
{
    const std::string text = name(value);
    if (text.back() == ']')
        return text + " is one of several values of a tag; choose its PLC with --plc to edit it";
    return places_[value].editor->obstacle(places_[value].value);
}

std::string PlantEditor::check(std::size_t value, const std::string &text) const
{
    return places_[value].editor->check(places_[value].value, text);
}

void PlantEditor::write(std::size_t value, const std::string &text)
{
    places_[value].editor->write(places_[value].value, text);
}

std::vector<ValueRow> PlantEditor::rows() const
{
    std::vector<ValueRow> rows;
    rows.reserve(places_.size());
    for (const auto &editor : editors_) {
        std::vector<ValueRow> own = editor->rows();
        std::move(own.begin(), own.end(), std::back_inserter(rows));
    }
    return rows;
}
