#include "signals/dbcreader.h"

#include "signals/dbcparser.h"

#include <QFile>

DbcResult readDbc(const QByteArray &content)
{
    return DbcParser(content).read();
}

bool readDbcContent(const QString &path, QByteArray *content, DbcProblem *problem)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *problem = {0, 0, DbcFault::CannotOpen, file.errorString()};
        return false;
    }
    if (file.size() > kMostDbcBytes) {
        *problem = {0, 0, DbcFault::TooLarge, path};
        return false;
    }
    *content = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        *problem = {0, 0, DbcFault::CannotOpen, file.errorString()};
        return false;
    }
    return true;
}

DbcResult readDbcFile(const QString &path)
{
    QByteArray content;
    DbcProblem problem;
    if (readDbcContent(path, &content, &problem))
        return readDbc(content);
    DbcResult result;
    result.problems.append(problem);
    return result;
}
