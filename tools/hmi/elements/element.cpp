#include "elements/element.h"

#include "common/time_text.h"
#include "elements/look.h"

#include <QtGui/QPainter>

using look::toQt;

// For how long the fate of a write that was done is told; another fate stays until the next write.
static const std::chrono::seconds DONE_SHOWN{8};

Element::Element(const LiveValue *value, const std::string &label, QWidget *parent)
    : QWidget(parent), value_(value), label_(toQt(label))
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAccessibleName(label_);
}

static std::uint64_t secondsOf(std::chrono::steady_clock::time_point time)
{
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::seconds>(time.time_since_epoch()).count());
}

std::uint64_t Element::stamp() const
{
    if (!value_)
        return 0;
    const bool ages = !value_->isGood() || value_->fate;
    return ages ? value_->revision * 31 + secondsOf(std::chrono::steady_clock::now()) : value_->revision;
}

void Element::refresh()
{
    const std::uint64_t now = stamp();
    if (wasPainted_ && now == painted_)
        return;
    painted_    = now;
    wasPainted_ = true;
    describeAnew();
    update();
}

QString Element::describe() const
{
    return value_ ? toQt(spokenText(*value_, std::chrono::steady_clock::now())) : QString();
}

void Element::describeAnew()
{
    QString text = describe();
    const QString said = note();
    if (!said.isEmpty() && !text.contains(said))
        text += "; " + said;
    if (priority() > 0)
        text += QString("; alarm of priority %1, %2").arg(priority()).arg(look::priorityWord(priority()));
    if (text != accessibleDescription())
        setAccessibleDescription(text);
}

QString Element::note() const
{
    if (!value_)
        return QString();
    const auto now = std::chrono::steady_clock::now();
    if (value_->writesUnderWay > 0)
        return "write under way";
    if (value_->fate && (!fins::isDone({*value_->fate}) || now - value_->fateTime < DONE_SHOWN))
        return toQt(value_->fate->text);
    if (value_->isGood())
        return QString();
    QString text = fins::text(value_->sample.quality);
    if (!value_->sample.text.empty())
        text += ", " + toQt(ageText(now - value_->goodUntil));
    return text;
}

// As much of a note as fits in a line: all of it, or what it begins with.
static QString fitted(const QString &said, const QFontMetrics &metrics, int width)
{
    if (metrics.horizontalAdvance(said) <= width)
        return said;
    for (int i = 0; i < said.size(); ++i) {
        if (said[i] == ',' || said[i] == ';' || said[i] == ':')
            return said.left(i);
    }
    return said;
}

// All but the content, which alone changes often.
QPixmap Element::makeGround(const QString &said) const
{
    QPixmap ground(size() * devicePixelRatioF());
    ground.setDevicePixelRatio(devicePixelRatioF());
    QPainter painter(&ground);
    painter.setFont(font());
    painter.fillRect(rect(), look::GROUND);
    const QRect frame = rect().adjusted(1, 1, -1, -1);
    look::drawFrame(painter, frame, quality(), isControl() ? look::CONTROL : look::FACE);
    painter.setPen(look::INK);
    QRect inner = frame.adjusted(5, 3, -5, -3);
    const int line = fontMetrics().height();
    QRect head(inner.left(), inner.top(), inner.width(), line);
    if (priority() > 0) {
        const int size = std::min(line + 4, inner.height());
        const QRect mark(inner.right() - size + 1, inner.top(), size, size);
        look::drawPriority(painter, QStyle::visualRect(layoutDirection(), inner, mark), priority());
        head.setWidth(head.width() - size - 4);
    }
    painter.setPen(look::DIM);
    look::drawFitted(painter, QStyle::visualRect(layoutDirection(), inner, head), start(), label_, line);
    painter.setPen(look::INK);
    if (!said.isEmpty())
        look::drawFitted(painter, QRect(inner.left(), inner.bottom() - line + 1, inner.width(), line), start(),
                         fitted(said, fontMetrics(), inner.width()), line);
    return ground;
}

void Element::paintEvent(QPaintEvent *)
{
    const QString said = note();
    const GroundKey key = {size(), quality(), priority(), isControl(), layoutDirection(), said};
    if (!(key == groundKey_) || ground_.isNull()) {
        groundKey_ = key;
        ground_    = makeGround(said);
    }
    QPainter painter(this);
    painter.drawPixmap(0, 0, ground_);
    painter.setPen(look::INK);
    const int line = fontMetrics().height();
    paintContent(painter, rect().adjusted(6, 4 + (label_.isEmpty() ? 0 : line), -6, said.isEmpty() ? -4 : -4 - line));
    if (hasFocus())
        look::drawFocus(painter, rect().adjusted(1, 1, -1, -1));
}

void Element::changeEvent(QEvent *event)
{
    ground_ = QPixmap(); // perhaps another font
    QWidget::changeEvent(event);
}

void Element::focusInEvent(QFocusEvent *)
{
    update();
}

void Element::focusOutEvent(QFocusEvent *)
{
    update();
}
