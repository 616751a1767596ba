#include "app/about.h"

#include "app/buildinfo.h"
#include "device/apppaths.h"
#include "device/language.h"

#include <QFile>
#include <QMessageBox>
#include <QSettings>
#include <QStringList>
#include <QTextStream>

namespace
{

QString rightsNotice()
{
    return text3("版权所有 (C) 2023 保留所有权利", "版權所有 (C) 2023 保留所有權利",
                 "Copyright (C) 2023 All rights reserved");
}

} // namespace

QString companyName()
{
    QStringList names;
    QFile file(applicationDir() + QStringLiteral("/config/company.txt"));
    if (file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        QTextStream in(&file);
        in.setCodec("UTF-8");
        const QString line = in.readLine();
        if (!line.isEmpty())
            names = line.split(QLatin1Char(';'));
    }
    const int index = static_cast<int>(qMin<unsigned>(languageCode(), English));
    return index < names.size() ? names.at(index) : QStringLiteral("公司名称缺失");
}

QString aboutText()
{
    const QSettings file(applicationDir() + QStringLiteral("/language/config.ini"), QSettings::IniFormat);
    if (file.value(QStringLiteral("LAST2/Sel"), 0).toInt() == 0)
        return QStringLiteral("Ostrel-%1\n%2").arg(buildinfo::version(), rightsNotice());
    return QStringLiteral("Ostrel-%1(%2 %3)\n%4,%5")
        .arg(buildinfo::version(), buildinfo::buildDate(), buildinfo::buildTime(), rightsNotice(), companyName());
}

void showAbout(QWidget *parent)
{
    QMessageBox box(QMessageBox::NoIcon, text3("关于Ostrel", "關於Ostrel", "About Ostrel"), aboutText(),
                    QMessageBox::Ok, parent);
    box.setTextFormat(Qt::PlainText);
    box.exec();
}
