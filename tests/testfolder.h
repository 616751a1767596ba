// A throw-away folder that stands for the folder of the executable, with config/, language/, help/ and firmware/.
#pragma once

#include <QString>
#include <QTemporaryDir>

class TestFolder
{
public:
    TestFolder(); // becomes applicationDir(); the settings store starts empty on config/setdb.txt inside
    ~TestFolder();

    QString path(const QString &relative) const; // "config/setdb.txt"
    void write(const QString &relative, const QByteArray &content) const;
    QByteArray read(const QString &relative) const;
    void useSettings(const QByteArray &line) const; // config/setdb.txt holds it and is loaded
    void copyCatalogues() const;                    // the built ones, into language/
    QString settingsPath() const { return path(QStringLiteral("config/setdb.txt")); }

private:
    QTemporaryDir dir_;
};
