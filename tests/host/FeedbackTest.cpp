// SPDX-License-Identifier: MIT
// Long work shows the operator how far it has come, through whatever the windows put behind the seam.
#include "host/Feedback.h"
#include "hostui/HostWindows.h"

#include <gtest/gtest.h>

#include <QStringList>

namespace {

using namespace xv;

// A progress view that writes down what it was told.
struct Recorded
{
    QStringList opened;
    QList<int> values;
};

class RecordingView : public host::ProgressView
{
public:
    explicit RecordingView(Recorded& record) : m_record(record) {}
    void setValue(int done) override { m_record.values << done; }

private:
    Recorded& m_record;
};

class FeedbackTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        host::setProgressFactory(
            [this](const QString& label, int total) -> std::unique_ptr<host::ProgressView> {
                m_record.opened << QStringLiteral("%1/%2").arg(label).arg(total);
                return std::make_unique<RecordingView>(m_record);
            });
    }
    // The other tests of the program find the services the program has.
    void TearDown() override { hostui::installSystemServices(); }
    Recorded m_record;
};

TEST_F(FeedbackTest, ARunShowsItsBarFromTheLengthGivenAndASideRunShowsNothing)
{
    const struct
    {
        int total;
        int shownFrom;
        bool shown;
    } cases[] = {{19, 20, false}, {20, 20, true}, {5, 1, true}, {0, 20, false}};
    for (const auto& c : cases) {
        m_record = {};
        host::Progress progress(QStringLiteral("Stampa"), c.total, c.shownFrom);
        progress(3);
        progress(c.total);
        EXPECT_EQ(m_record.opened,
                  c.shown ? QStringList{QStringLiteral("Stampa/%1").arg(c.total)} : QStringList())
            << c.total << " from " << c.shownFrom;
        EXPECT_EQ(m_record.values, (c.shown ? QList<int>{3, c.total} : QList<int>())) << c.total;
    }
    host::setProgressFactory({});
    m_record = {};
    host::Progress without(QStringLiteral("Stampa"), 100);
    without(50); // no windows: the work goes on with nothing shown
    EXPECT_TRUE(m_record.opened.isEmpty());
}

TEST_F(FeedbackTest, TheWaitCursorComesAndGoesInPairsEvenNestedAndNeedsBothHandlers)
{
    QStringList calls;
    host::Busy::setHandlers([&calls] { calls << "su"; }, [&calls] { calls << "giù"; });
    {
        const host::Busy outer;
        const host::Busy inner;
    }
    EXPECT_EQ(calls, (QStringList{"su", "su", "giù", "giù"}));
    calls.clear();
    host::Busy::setHandlers([&calls] { calls << "su"; }, {});
    {
        const host::Busy halfInstalled;
    }
    EXPECT_TRUE(calls.isEmpty()) << "a cursor put up must be taken down again";
}

} // namespace
