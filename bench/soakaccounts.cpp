#include "soakaccounts.h"

#include "analysis/channelpanel.h"
#include "capturerows.h"

#include <QFile>
#include <QRegularExpression>
#include <QTextStream>

quint64 SoakAccounts::received(unsigned channel) const
{
    return receivedBefore_[channel] + user_.number(kReceivedLabels[channel]);
}

quint64 SoakAccounts::transmitted(unsigned channel) const
{
    return transmittedBefore_[channel] + user_.number(kTransmittedLabels[channel]);
}

quint64 SoakAccounts::counted() const
{
    return received(0) + received(1) + transmitted(0) + transmitted(1);
}

void SoakAccounts::resetTotals()
{
    for (unsigned channel = 0; channel < kChannelCount; ++channel) {
        receivedBefore_[channel] = received(channel);
        transmittedBefore_[channel] = transmitted(channel);
    }
    user_.click("pushButton");
}

void SoakAccounts::startCapture(const QString &path, int mode)
{
    user_.startCapture(path, mode);
    path_ = path;
    mode_ = mode;
    countedAtStart_ = counted();
    ++captures_;
}

void SoakAccounts::stopCapture()
{
    if (!capturing())
        return;
    user_.stopCapture();
    const quint64 asked = counted() - countedAtStart_;
    const qint64 rows = captureRows(path_);
    const bool all = mode_ == 0;
    if (rows < 0 || (all ? static_cast<quint64>(rows) != asked : static_cast<quint64>(rows) > asked))
        faults_ += QStringLiteral("capture %1: %2 rows for %3 frames").arg(captures_).arg(rows).arg(asked);
    if (all) {
        captured_ += static_cast<quint64>(rows);
    } else {
        filtered_ += asked;
        filteredRows_ += static_cast<quint64>(rows);
    }
    QFile::remove(path_);
    path_.clear();
}

void SoakAccounts::readLog()
{
    static const QRegularExpression loss(QStringLiteral("(?:接收丢失|接收丟失| lost )(\\d+)"));
    auto match = loss.globalMatch(user_.log());
    while (match.hasNext())
        toldLost_ += match.next().captured(1).toULongLong();
}

// What the statistics window shows. Of rows sent from files it counts those that the driver took.
void SoakAccounts::balanceStatistics(unsigned channel)
{
    const auto *panel = statistics_->findChild<ChannelPanel *>(QStringLiteral("channelPanel%1").arg(channel + 1));
    const auto *kinds = panel->findChild<KindModel *>();
    const auto shown = [&](KindModel::Column column) {
        const auto number = [&](int row) {
            return kinds->data(kinds->index(row, column), Qt::DisplayRole).toULongLong();
        };
        return number(KindModel::kRows - 1) - number(static_cast<int>(FrameKind::Error));
    };
    QTextStream(stdout) << "channel " << channel + 1 << " in the statistics: received " << shown(KindModel::RxTotal)
                        << ", sent " << shown(KindModel::TxTotal) << '\n';
    if (shown(KindModel::RxTotal) != received(channel))
        faults_ += QStringLiteral("channel %1: the statistics have not received what was counted").arg(channel + 1);
    if (shown(KindModel::TxTotal) != driver_.transmitted(channel))
        faults_ += QStringLiteral("channel %1: the statistics have not sent what was given").arg(channel + 1);
}

bool SoakAccounts::balance()
{
    stopCapture();
    readLog();
    QTextStream out(stdout);
    for (unsigned channel = 0; channel < kChannelCount; ++channel) {
        const quint64 taken = driver_.received(channel);
        const quint64 given = driver_.transmitted(channel);
        out << "channel " << channel + 1 << ": taken from the driver " << taken << ", counted " << received(channel)
            << "; given to the driver " << given << ", counted " << transmitted(channel) << Qt::endl;
        balanceStatistics(channel);
        if (taken != received(channel))
            faults_ += QStringLiteral("channel %1: frames taken are not the frames counted").arg(channel + 1);
        if (filesSent_ ? given > transmitted(channel) : given != transmitted(channel))
            faults_ += QStringLiteral("channel %1: frames given are not the frames counted").arg(channel + 1);
    }
    out << "counted " << counted() << " = captured " << captured_ << " + captured through a filter " << filteredRows_
        << " of " << filtered_ << " + never asked for " << counted() - captured_ - filtered_ << ", in " << captures_
        << " captures\n";
    out << "lost in the adapter's full queues " << driver_.lost() << ", told in the operation log " << toldLost_
        << '\n';
    if (driver_.lost() != toldLost_)
        faults_ += QStringLiteral("the operation log does not tell what was lost");
    for (const QString &fault : faults_)
        out << "FAULT: " << fault << '\n';
    return faults_.isEmpty();
}
