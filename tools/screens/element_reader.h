#ifndef SCREENS_ELEMENT_READER_H
#define SCREENS_ELEMENT_READER_H

#include "documents/table_reader.h"
#include "screens/names.h"

// Reads one element of a screen, and reports what is wrong with it.

class ElementReader {
public:
    /// `columns` and `rows` are those of the grid. All arguments outlive this object.
    ElementReader(const DataNode &table, int columns, int rows, Names &names)
        : table_(table), columns_(columns), rows_(rows), names_(names), reader_(table, names.file(), names.problems())
    {
    }

    /// Returns false for what is no element at all.
    bool read();

    const ScreenElement &element() const { return element_; }

    /// Of the element in the grid, as the file says it; nothing if that is wrong.
    const std::optional<Place> &gridPlace() const { return gridPlace_; }

private:
    void readGridPlace();
    bool readPair(const DataNode &node, const char *form, long (&pair)[2]);
    void readKind();
    void readTexts();
    void readBar();
    void readLamp();
    void readTrend();
    void readTrendTags(const DataNode &tags);
    void readButton();
    void readButtonValue(const std::optional<NamedValue> &named);
    std::string needCaption(const char *key, const char *example);
    void readStates(const char *key, std::size_t least, const std::optional<NamedValue> &named);
    void readState(const DataNode &node, const char *key, const std::optional<NamedValue> &named);
    std::optional<NamedValue> readTag(const Kinds &kinds);
    std::optional<NamedValue> readControl(const Kinds &kinds, const std::string &user);
    std::optional<double> readLimit(const char *key, const std::optional<double> &ofTag, bool hasTag);
    std::string user() const { return (element_.kind == ElementKind::NUMBER ? "an element of type " : "a ") + type_; }

    const DataNode      &table_;
    int                  columns_;
    int                  rows_;
    Names               &names_;
    TableReader          reader_;
    std::string          type_;
    ScreenElement        element_;
    std::optional<Place> gridPlace_;
};

/// The text of `key`, which is not empty; "" if it is missing, or wrong, which is then reported.
std::string readFilledText(TableReader &reader, const char *key);

#endif
