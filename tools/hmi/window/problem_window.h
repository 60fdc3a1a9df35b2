#ifndef HMI_WINDOW_PROBLEM_WINDOW_H
#define HMI_WINDOW_PROBLEM_WINDOW_H

#include <QtWidgets/QWidget>

#include <string>
#include <vector>

/// What is shown in place of the panel when it cannot start: every problem on a line, and how to mend it.
class ProblemWindow : public QWidget {
public:
    explicit ProblemWindow(const std::vector<std::string> &lines);
};

#endif
