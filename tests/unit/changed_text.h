#ifndef TESTS_UNIT_CHANGED_TEXT_H
#define TESTS_UNIT_CHANGED_TEXT_H

#include <QtCore/QString>

/// Changes one text of the register tables for as long as it lives.
class ChangedText {
public:
    ChangedText(QString &text, const char *changed) : text_(text), before_(text) { text = QLatin1String(changed); }
    ~ChangedText() { text_ = before_; }

    ChangedText(const ChangedText &) = delete;
    ChangedText &operator=(const ChangedText &) = delete;

private:
    QString      &text_;
    const QString before_;
};

#endif
