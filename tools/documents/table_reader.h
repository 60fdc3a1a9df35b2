#ifndef DOCUMENTS_TABLE_READER_H
#define DOCUMENTS_TABLE_READER_H

#include "documents/document.h"

#include <string>
#include <vector>

// Takes the values that a table may have out of it, and reports each that is wrong or unknown with its place. What is
// left out, or an empty cell of a CSV file, leaves `value` untouched.

class TableReader {
public:
    TableReader(const DataNode &table, const std::string &file, Problems &problems)
        : table_(table), file_(file), problems_(problems)
    {
    }

    /// The child of that name, or null. The name is then a known one.
    const DataNode *take(const std::string &key);

    /// Like take(), and a problem if it is missing.
    const DataNode *need(const std::string &key, const std::string &example);

    /// False once something was reported.
    bool isSound() const { return sound_; }

    /// Each returns false only if the value is wrong.
    bool text(const std::string &key, std::string &value);
    bool whole(const std::string &key, long minimum, long maximum, long &value);
    bool number(const std::string &key, double &value);
    bool yesOrNo(const std::string &key, bool &value);

    /// Reports every key that nobody took, with those that are known.
    void refuseOthers();

    /// Returns false.
    bool report(const DataNode &node, const std::string &text);

private:
    const DataNode    &table_;
    const std::string &file_;
    Problems          &problems_;
    std::vector<std::string> known_;
    bool               sound_ = true;
};

#endif
