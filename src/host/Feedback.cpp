// SPDX-License-Identifier: MIT
#include "Feedback.h"

namespace xv::host {

namespace {

struct State
{
    ProgressFactory progress;
    std::function<void()> busyBegin;
    std::function<void()> busyEnd;
};

State& state()
{
    static State s;
    return s;
}

} // namespace

void setProgressFactory(ProgressFactory factory)
{
    state().progress = std::move(factory);
}

Progress::Progress(const QString& label, int total, int shownFrom)
{
    if (total >= shownFrom && state().progress)
        m_view = state().progress(label, total);
}

Progress::~Progress() = default;

void Progress::operator()(int done)
{
    if (m_view)
        m_view->setValue(done);
}

Busy::Busy() : m_shown(state().busyBegin && state().busyEnd)
{
    if (m_shown)
        state().busyBegin();
}

Busy::~Busy()
{
    if (m_shown)
        state().busyEnd();
}

void Busy::setHandlers(std::function<void()> begin, std::function<void()> end)
{
    state().busyBegin = std::move(begin);
    state().busyEnd = std::move(end);
}

} // namespace xv::host
