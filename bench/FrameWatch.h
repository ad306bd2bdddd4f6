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

} // namespace xv::bench
