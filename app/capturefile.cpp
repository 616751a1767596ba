#include "app/capturefile.h"

#include "device/language.h"
#include "frames/csvrow.h"

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
    if (!file_.open(kOpenMode))
        return false;
    open_ = true;
    mode_ = mode;
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
    if (lostRows_ > 0)
        emit logLine(text3("实时保存结束，%1 行未能写入文件", "實時保存結束，%1 行未能寫入文件",
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
    if (!writeGathered())
        lostRows_ += rowCount_;
    rows_.resize(0); // keeps the reserved room
    rowCount_ = 0;
}

bool CaptureFile::writeGathered()
{
    const QByteArray bytes = head_.isEmpty() ? rows_.toUtf8() : head_ + rows_.toUtf8();
    if (file_.isOpen() && file_.write(bytes) == bytes.size() && file_.flush()) {
        head_.clear();
        wholeSize_ = file_.size();
        return true;
    }
    if (!failed_) {
        failed_ = true;
        emit logLine(
            text3("实时保存写入文件失败：%1", "實時保存寫入文件失敗：%1", "The capture file cannot be written: %1")
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
