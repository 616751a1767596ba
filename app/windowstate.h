// Where the main window was and how its parts were divided, from one start to the next. Kept by the toolkit's own means
// for the user (QSettings), not in the settings file of the program.
#pragma once

class QMainWindow;

class WindowState
{
public:
    // Restores what was kept; before the window is shown. The window outlives this object.
    explicit WindowState(QMainWindow &window);
    WindowState(const WindowState &) = delete;
    WindowState &operator=(const WindowState &) = delete;
    ~WindowState(); // keeps what there is now

private:
    void restoreColumns();
    void keepColumns() const;

    QMainWindow &window_;
};
