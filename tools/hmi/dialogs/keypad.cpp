#include "dialogs/keypad.h"

#include "elements/look.h"

#include <QtCore/QLocale>
#include <QtGui/QKeyEvent>
#include <QtWidgets/QGridLayout>
#include <QtWidgets/QLabel>

#include <cmath>

using look::toQt;

static const int LONGEST_NUMBER = 20;
static const QChar BACK(0x232B);

static QString plain(double number)
{
    return QString::number(number, 'g', 12);
}

std::string limitsText(const LiveValue &value)
{
    if (!value.minimum && !value.maximum)
        return "";
    const QString unit = value.sample.unit.empty() ? QString() : " " + toQt(value.sample.unit);
    QString text;
    if (value.minimum && value.maximum)
        text = plain(*value.minimum) + " to " + plain(*value.maximum);
    else
        text = value.minimum ? "at least " + plain(*value.minimum) : "at most " + plain(*value.maximum);
    return (text + unit).toStdString();
}

Keypad::Keypad(const LiveValue &value, std::function<void(const std::string &)> onNumber, QWidget *window)
    : Overlay(toQt(value.label), window), value_(value), onNumber_(std::move(onNumber)), now_(new QLabel),
      entry_(new QLabel), hint_(new QLabel)
{
    entry_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    entry_->setFrameShape(QFrame::Box);
    QFont font = entry_->font();
    font.setPointSizeF(font.pointSizeF() * 1.5);
    entry_->setFont(font);
    hint_->setWordWrap(true);
    auto *head = new QHBoxLayout;
    head->addWidget(now_, 1);
    head->addWidget(entry_, 1);
    body()->addLayout(head);
    body()->addWidget(hint_);
    buildKeys();
    addButton("Cancel", [this] { close(); });
    accept_ = addButton("Set", [this] { accept(); });
    setFirst(this);
}

void Keypad::buildKeys()
{
    static const char *const ROWS[] = {"789", "456", "123", "-0."};
    auto *grid = new QGridLayout;
    grid->setSpacing(4);
    body()->addLayout(grid, 1);
    const auto add = [&](QChar key, int row, int column, int rows = 1) {
        QPushButton *button = makeButton(key == BACK ? QString("\u2190") : QString(key));
        button->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
        button->setFocusPolicy(Qt::NoFocus); // digits are typed
        button->setAccessibleName(key == BACK ? QString("delete") : QString(key));
        QObject::connect(button, &QPushButton::clicked, this, [this, key] { type(key); });
        grid->addWidget(button, row, column, rows, 1);
    };
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 3; ++column)
            add(QLatin1Char(ROWS[row][column]), row, column);
    }
    add(BACK, 0, 3, 4);
}

void Keypad::type(QChar key)
{
    if (key == BACK)
        typed_.chop(1);
    else if (key == '-')
        typed_ = typed_.startsWith('-') ? typed_.mid(1) : "-" + typed_;
    else if (typed_.size() < LONGEST_NUMBER && !(key == '.' && typed_.contains('.')))
        typed_ += key;
    refresh();
}

// What is wrong with what was typed; "" if nothing is.
QString Keypad::problem() const
{
    bool isNumber = false;
    const double number = QLocale::c().toDouble(typed_, &isNumber);
    if (!isNumber || !std::isfinite(number))
        return "type a number";
    if ((value_.minimum && number < *value_.minimum) || (value_.maximum && number > *value_.maximum))
        return typed_ + " is outside of the limits: use " + toQt(limitsText(value_));
    return QString();
}

void Keypad::refresh()
{
    now_->setText("now " + toQt(shownText(value_.sample)));
    entry_->setText(typed_.isEmpty() ? QString(" ") : typed_);
    entry_->setAccessibleName("new value");
    entry_->setAccessibleDescription(typed_);
    const QString limits = toQt(limitsText(value_));
    const QString wrong  = typed_.isEmpty() || typed_ == "-" ? QString() : problem();
    hint_->setText(!wrong.isEmpty() ? wrong : limits.isEmpty() ? QString(" ") : "limits: " + limits);
    accept_->setEnabled(!typed_.isEmpty() && problem().isEmpty());
}

void Keypad::accept()
{
    if (!problem().isEmpty())
        return;
    const auto onNumber = onNumber_;
    const std::string number = typed_.toStdString();
    close();
    onNumber(number);
}

void Keypad::keyPressEvent(QKeyEvent *event)
{
    const QString text = event->text();
    if (event->key() == Qt::Key_Backspace)
        type(BACK);
    else if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        accept();
    else if (text.size() == 1 && QString("0123456789.-").contains(text))
        type(text.at(0));
    else if (text == ",")
        type('.');
    else
        Overlay::keyPressEvent(event);
}
