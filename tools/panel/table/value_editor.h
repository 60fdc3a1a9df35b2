#ifndef PANEL_TABLE_VALUE_EDITOR_H
#define PANEL_TABLE_VALUE_EDITOR_H

#include <cstddef>
#include <string>

// What the table needs to have a value edited. A value is told by its place in the order in which all are watched.

class ValueEditor {
public:
    ValueEditor() = default;
    ValueEditor(const ValueEditor &) = delete;
    ValueEditor &operator=(const ValueEditor &) = delete;
    virtual ~ValueEditor() = default;

    virtual std::string name(std::size_t value) const = 0;

    /// What the PLC holds now, with the unit.
    virtual std::string held(std::size_t value) const = 0;

    /// What may be written, in words.
    virtual std::string allowed(std::size_t value) const = 0;

    /// Why the value cannot be written now; "" if it can.
    virtual std::string obstacle(std::size_t value) const = 0;

    /// `text` as the table would show it, with the unit. Throws UsageError, which says why it cannot be written.
    virtual std::string check(std::size_t value, const std::string &text) const = 0;

    /// Writes `text`, for which obstacle() and check() have found nothing.
    virtual void write(std::size_t value, const std::string &text) = 0;
};

#endif
