#pragma once

/// A bar on standard error that fills up while something runs. Its line is wiped when the object ends.
class progress_bar {
public:
    /// @param wanted  false, or standard error being no terminal, makes a bar that never shows
    explicit progress_bar(bool wanted);
    ~progress_bar();
    progress_bar(const progress_bar&) = delete;
    progress_bar& operator=(const progress_bar&) = delete;

    /// @param share  done so far, 0 to 1; draws only when the percentage changes
    void show(double share);

private:
    bool visible_;
    int percent_ = -1;
};
