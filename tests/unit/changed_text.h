#ifndef TESTS_UNIT_CHANGED_TEXT_H
#define TESTS_UNIT_CHANGED_TEXT_H

#include <QtCore/QString>

/// Changes one text of the register tables for as long as it lives.
class ChangedText {
public:
    ChangedText(QString &text, const char *changed) : m_text(text), m_before(text) { text = QLatin1String(changed); }
    ~ChangedText() { m_text = m_before; }

    ChangedText(const ChangedText &) = delete;
    ChangedText &operator=(const ChangedText &) = delete;

private:
    QString      &m_text;
    const QString m_before;
};

#endif
