#include "cli/textoutput.h"

#include "cli/messages.h"
#include "cli/traceoutput.h"
#include "traces/gatheredoutput.h"

#include <cerrno>

bool standardOutputIsFile()
{
    QFile file;
    return openStandardOutput(&file) && !file.isSequential();
}

QString TextOutput::name() const
{
    return file_.fileName().isEmpty() ? QStringLiteral("standard output") : file_.fileName();
}

bool TextOutput::open(const QString &path)
{
    const bool standard = path == QLatin1String("-");
    if (!standard)
        file_.setFileName(path);
    failed_ = !(standard ? openStandardOutput(&file_)
                         : file_.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered));
    if (failed_)
        tell(name() + QStringLiteral(": ") + file_.errorString());
    return !failed_;
}

bool TextOutput::flush()
{
    if (failed_ || text_.empty())
        return !failed_;
    if (!file_.isOpen())
        openStandardOutput(&file_);
    const auto size = static_cast<qint64>(text_.size());
    errno = 0;
    failed_ = writeWhatFits(&file_, text_.data(), size) != size;
    // A reader that has seen enough goes away; that is no news to the user.
    if (failed_ && errno != EPIPE)
        tell(name() + QStringLiteral(" cannot be written: ") + file_.errorString());
    text_.clear();
    return !failed_;
}
