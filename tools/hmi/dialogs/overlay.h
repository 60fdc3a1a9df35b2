#ifndef HMI_DIALOGS_OVERLAY_H
#define HMI_DIALOGS_OVERLAY_H

#include <QtWidgets/QBoxLayout>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QWidget>

#include <functional>

// What comes in front of a screen: it covers the window, so that nothing under it can be touched, and needs no window
// manager. Escape and its cancelling button close it; closing deletes it.

class Overlay : public QWidget {
public:
    Overlay(const QString &title, QWidget *window);

    /// Covers the window; the keyboard goes to what setFirst() has named.
    void appear();

    void close();

    /// Told once, before it is gone.
    std::function<void()> onClosed;

    /// Called ten times a second, and when it appears.
    virtual void refresh() {}

protected:
    QVBoxLayout *body() { return body_; }

    /// What has the keyboard first; else the first button has it.
    void setFirst(QWidget *widget) { first_ = widget; }

    /// A button of touch size, in the row at the bottom; the first one closes.
    QPushButton *addButton(const QString &text, const std::function<void()> &onClick);

    bool eventFilter(QObject *watched, QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    bool focusNextPrevChild(bool next) override;

    /// A button of touch size, for any place.
    QPushButton *makeButton(const QString &text);

private:
    void cover();

    QWidget     *first_ = nullptr;

    QWidget     *frame_;
    QVBoxLayout *body_;
    QHBoxLayout *buttons_;
};

#endif
