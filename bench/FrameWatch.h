// SPDX-License-Identifier: MIT
#pragma once

#include <QAbstractScrollArea>
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEvent>
#include <QObject>
#include <QPointer>
#include <QWidget>

namespace xv::bench {

// What the operator waits for ends with the frame that shows it: a key handled but not yet painted is not
// seen. This watches the paints of one widget (a scroll area's viewport, where its cells are drawn) so a
// benchmark can stop its clock once the paint that follows a key has been delivered. The offscreen
// platform paints into a backing store as a screen's does, so it works headless.
class FrameWatch final : public QObject
{
public:
    explicit FrameWatch(QWidget* widget)
    {
        auto* area = qobject_cast<QAbstractScrollArea*>(widget);
        m_widget = area ? area->viewport() : widget;
        m_widget->installEventFilter(this);
    }
    ~FrameWatch() override
    {
        if (m_widget)
            m_widget->removeEventFilter(this);
    }
    FrameWatch(const FrameWatch&) = delete;
    FrameWatch& operator=(const FrameWatch&) = delete;

    // Paints delivered while the key was still being handled showed a state on the way; only the next one
    // counts. Call once the key's handling has returned.
    void arm() { m_painted = false; }

    // Runs the event loop until the widget has been painted and the repaint that painted it has ended;
    // false when no paint came before the deadline (the key changed nothing the widget shows).
    bool waitForFrame(int timeoutMs = 30000)
    {
        const QDeadlineTimer deadline(timeoutMs);
        while (!m_painted) {
            if (deadline.hasExpired())
                return false;
            // The repaint sends the paint from inside one posted update request: when this returns after
            // the paint was seen, the whole window's repaint, and its flush to the backing store, are done.
            QCoreApplication::processEvents(QEventLoop::AllEvents);
        }
        return true;
    }

    // Lets pending paints happen, so that the frame after the next key is the key's own.
    static void settle()
    {
        for (int round = 0; round < 3; ++round)
            QCoreApplication::processEvents(QEventLoop::AllEvents);
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (watched == m_widget && event->type() == QEvent::Paint)
            m_painted = true;
        return false;
    }

private:
    QPointer<QWidget> m_widget;
    bool m_painted = false;
};

// Some keys leave the window as it was, or change a few cells anywhere in it: a delete, after which the
// order stays on screen, repaints only what its write back changed, if anything. No one widget's paint can
// then end the wait, so this watches the window's repaints instead: the update request that paints every
// widget marked dirty and flushes the backing store.
class WindowFrames final : public QObject
{
public:
    explicit WindowFrames(QWidget* widget) : m_window(widget->window())
    {
        m_window->installEventFilter(this);
    }
    ~WindowFrames() override
    {
        if (m_window)
            m_window->removeEventFilter(this);
    }
    WindowFrames(const WindowFrames&) = delete;
    WindowFrames& operator=(const WindowFrames&) = delete;

    // Runs the event loop, once the key's handling has returned, until a pass of it brings no repaint of
    // the window: whatever the key changed has then been painted. Returns the repaints seen, 0 when the key
    // changed nothing shown; -1 when repaints were still coming at the deadline.
    int waitUntilPainted(int timeoutMs = 30000)
    {
        const QDeadlineTimer deadline(timeoutMs);
        int total = 0;
        for (;;) {
            m_repaints = 0;
            QCoreApplication::processEvents(QEventLoop::AllEvents);
            if (m_repaints == 0)
                return total;
            total += m_repaints;
            if (deadline.hasExpired())
                return -1;
        }
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (watched == m_window && event->type() == QEvent::UpdateRequest)
            ++m_repaints;
        return false;
    }

private:
    QPointer<QWidget> m_window;
    int m_repaints = 0;
};

} // namespace xv::bench
