#include "app/capturefile.h"

#include "device/language.h"
#include "frames/csvrow.h"

#include <QDir>

namespace
{
constexpr QIODevice::OpenMode kOpenMode = QIODevice::ReadWrite | QIODevice::Text;
constexpr int kRoundCapacity = 1 << 20; // characters; a round of a saturated bus needs about half, a longer one is cut

// Whether rows can go right behind what the file holds: it is empty, or its last line is complete.
bool endsWithLine(QFile &file)
{
    char last = '\n';
    if (file.size() > 0 && file.seek(file.size() - 1))
        file.getChar(&last);
    return last == '\n';
}
} // namespace

CaptureFile::~CaptureFile()
{
    close();
}

bool CaptureFile::open(const QString &path, const QStringList &titles, CaptureMode mode)
{
    close();
    file_.setFileName(path);
    if (!file_.open(kOpenMode)) {
        emit logLine(text3("实时保存的文件无法打开：%1（%2）", "實時保存的檔案無法打開：%1（%2）",
                           "The capture file cannot be opened: %1 (%2)")
                         .arg(shownPath(), file_.errorString()));
        return false;
    }
    emit logLine(text3("实时保存开始：%1", "實時保存開始：%1", "Capture begun: %1").arg(shownPath()));
    open_ = true;
    mode_ = mode;
    writtenRows_ = 0;
    lostRows_ = 0;
    failed_ = false;
    rows_.reserve(kRoundCapacity);
    head_ = csvHeaderLine(titles).toUtf8();
    if (file_.size() == 0)
        head_.prepend(kUtf8Mark);
    else if (!endsWithLine(file_))
        head_.prepend('\n');
    wholeSize_ = file_.size();
    if (!file_.isSequential())
        file_.seek(wholeSize_);
    writeGathered();
    return true;
}

void CaptureFile::close()
{
    if (!open_)
        return;
    writeRound();
    open_ = false;
    file_.close();
    emit logLine(
        text3("实时保存结束：%1，共写入 %2 行", "實時保存結束：%1，共寫入 %2 行", "Capture ended: %1, rows written: %2")
            .arg(shownPath(), QString::number(writtenRows_)));
    if (lostRows_ > 0)
        emit logLine(text3("实时保存结束，%1 行未能写入文件", "實時保存結束，%1 行未能寫入檔案",
                           "Capture ended, %1 rows could not be written")
                         .arg(lostRows_));
}

void CaptureFile::add(const ModelItem &item)
{
    appendCsvRow(rows_, item);
    ++rowCount_;
    if (rows_.size() >= kRoundCapacity)
        writeRound();
}

void CaptureFile::writeRound()
{
    if (rowCount_ == 0)
        return;
    (writeGathered() ? writtenRows_ : lostRows_) += rowCount_;
    rows_.resize(0); // keeps the reserved room
    rowCount_ = 0;
}

QString CaptureFile::shownPath() const
{
    return QDir::toNativeSeparators(file_.fileName());
}

// A disk that fills takes a part and gives no reason; the rest, tried again, then fails with one.
bool CaptureFile::writeAll(const QByteArray &bytes)
{
    for (int done = 0; done < bytes.size();) {
        const qint64 taken = file_.write(bytes.constData() + done, bytes.size() - done);
        if (taken <= 0)
            return false;
        done += static_cast<int>(taken);
    }
    return file_.flush() || file_.flush();
}

bool CaptureFile::writeGathered()
{
    const QByteArray bytes = head_.isEmpty() ? rows_.toUtf8() : head_ + rows_.toUtf8();
    if (file_.isOpen() && writeAll(bytes)) {
        head_.clear();
        wholeSize_ = file_.size();
        return true;
    }
    if (!failed_) {
        failed_ = true;
        emit logLine(
            text3("实时保存写入文件失败：%1", "實時保存寫入檔案失敗：%1", "The capture file cannot be written: %1")
                .arg(file_.errorString()));
    }
    backToLastWholeRow();
    return false;
}

// Reopening drops what is still in the file's buffer; a file that has vanished is not made anew.
void CaptureFile::backToLastWholeRow()
{
    file_.close();
    if (file_.open(kOpenMode | QIODevice::ExistingOnly) && !file_.isSequential()) {
        file_.resize(wholeSize_);
        file_.seek(wholeSize_);
    }
}
