#ifndef HMI_WINDOW_BANNER_H
#define HMI_WINDOW_BANNER_H

#include "elements/controls.h"
#include "model/panel.h"

/// The line at the top: the state of the links, the worst one first. A touch tells more.
class LinkBanner : public Control {
public:
    LinkBanner(Panel &panel, QWidget *parent);

    std::string lock() const override { return ""; }

protected:
    QString caption() const override;
    std::uint64_t stamp() const override;
    void paintEvent(QPaintEvent *event) override;

private:
    const Station &worst() const;

    Panel &panel_;
};

#endif
