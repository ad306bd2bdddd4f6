// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <functional>
#include <memory>

namespace xv::host {

// What the operator sees of long work: a progress bar for a run of known length, a wait cursor for a wait
// of unknown length. The windows put the real ones in place at start-up; without windows (a tool, a test)
// the work runs with nothing shown.

class ProgressView
{
public:
    virtual ~ProgressView() = default;
    virtual void setValue(int done) = 0;
};

using ProgressFactory = std::function<std::unique_ptr<ProgressView>(const QString& label, int total)>;
void setProgressFactory(ProgressFactory factory);

// A run of total steps under a label. Runs shorter than shownFrom steps show nothing: the bar would flash.
class Progress
{
public:
    Progress(const QString& label, int total, int shownFrom = 20);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    void operator()(int done);

private:
    std::unique_ptr<ProgressView> m_view;
};

// Shows the wait cursor from construction to destruction.
class Busy
{
public:
    Busy();
    ~Busy();
    Busy(const Busy&) = delete;
    Busy& operator=(const Busy&) = delete;

    // begin shows the wait cursor, end takes it away again; they come in pairs and may nest.
    static void setHandlers(std::function<void()> begin, std::function<void()> end);

private:
    bool m_shown;
};

} // namespace xv::host
