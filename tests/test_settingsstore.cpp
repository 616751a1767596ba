#include "device/language.h"
#include "device/settingsstore.h"
#include "testfolder.h"

#include <QtTest>

#include <thread>

class TestSettingsStore : public QObject
{
    Q_OBJECT

private slots:
    void aFileIsWhollyValidOrIgnored()
    {
        const TestFolder folder;
        const auto valueIn = [&](const QByteArray &content) {
            folder.write("config/setdb.txt", content);
            settings::load(folder.settingsPath());
            return settings::value("a", "default");
        };
        for (const char *valid : {"a,1;b,2", "a,1\nb,2;c", "b,2;a,1\r\n", "a,0;a,1"})
            QCOMPARE(valueIn(valid), QString("1"));
        for (const char *ignored : {"", "a,1;", "a,1;b", "a,1;b,2,3"})
            QCOMPARE(valueIn(ignored), QString("default"));
        QCOMPARE(folder.read("config/setdb.txt"), QByteArray("a,1;b,2,3")); // reading never writes
    }

    void defaultsStayInMemoryAndWritesAreOrdered()
    {
        const TestFolder folder;
        QCOMPARE(settings::value("b", "2"), QString("2"));
        QCOMPARE(settings::value("b", "3"), QString("2")); // the first default was remembered
        QVERIFY(folder.read("config/setdb.txt").isEmpty());
        settings::setValue("c", "", false);
        settings::setValue("B", QString::fromUtf8("值"), true);
        QCOMPARE(folder.read("config/setdb.txt"), QByteArray("B,值;b,2;c,"));
        folder.write("config/setdb.txt", "");
        settings::setValue("c", "", true); // unchanged, but still written
        QCOMPARE(folder.read("config/setdb.txt"), QByteArray("B,值;b,2;c,"));
        QCOMPARE(settings::number("c", "5"), 0u);
    }

    void whatBecomesOfTheFileIsTold()
    {
        const TestFolder folder;
        setLanguageCode(English);
        const auto notices = [] {
            QStringList kinds;
            for (const QString &line : settings::takeNotices())
                kinds << line.section(": ", 0, 0) + (line.contains("()") ? " without a reason" : "");
            return kinds.join('|');
        };
        for (const char *damaged : {"a,1;b", "a,1;"}) {
            folder.useSettings(damaged);
            QCOMPARE(notices(), QString("The settings file is damaged and was ignored"));
            settings::setValue("a", "2", true);
            settings::setValue("a", "3", true);
            QCOMPARE(notices(), QString("The damaged settings file is kept as"));
            QCOMPARE(folder.read("config/setdb.txt"), QByteArray("a,3"));
        }
        QCOMPARE(folder.read("config/setdb.damaged1.txt") + folder.read("config/setdb.damaged2.txt"),
                 QByteArray("a,1;ba,1;"));

        settings::load(folder.path("new/sub/setdb.txt"));
        settings::setValue("a", "1", true);
        QCOMPARE(notices(), QString("Settings folder created"));
        QCOMPARE(folder.read("new/sub/setdb.txt"), QByteArray("a,1"));

        folder.write("file", "");
        settings::load(folder.path("file/setdb.txt"));
        for (const char *told : {"Settings cannot be saved", ""}) { // once
            settings::setValue("a", "1", true);
            QCOMPARE(notices(), QString(told));
        }
        QCOMPARE(settings::value("a", "0"), QString("1"));
        QFile::remove(folder.path("file"));
        settings::save();
        QCOMPARE(notices(), QString("Settings folder created"));
        QVERIFY(QDir(folder.path("file")).removeRecursively());
        folder.write("file", "");
        settings::save();
        QCOMPARE(notices(), QString("Settings cannot be saved")); // again, after a success
    }

    void languageComesFromItsFileUnlessTheMapHasIt()
    {
        const TestFolder folder;
        QCOMPARE(settings::value("Language", "CN.qm"), QString("CN.qm"));
        folder.write("language/config.ini", "[LAST]\nSel=2\n");
        QCOMPARE(settings::value("Language", "CN.qm"), QString("EN.qm"));
        for (const char *bad : {"-1", "300", "5000"}) { // of different lengths: a file read a moment ago is cached
            folder.write("language/config.ini", QByteArray("[LAST]\nSel=") + bad + "\n");
            QCOMPARE(settings::value("Language", "CNF.qm"), QString("CNF.qm"));
        }
        settings::save();
        QVERIFY(!folder.read("config/setdb.txt").contains("Language"));
        settings::setValue("Language", "EN.qm", true);
        QCOMPARE(settings::value("Language", "CN.qm"), QString("EN.qm"));
    }

    void readersAndWritersTogether()
    {
        const TestFolder folder;
        std::vector<std::thread> threads;
        for (int t = 0; t < 3; ++t)
            threads.emplace_back([t] {
                for (int i = 0; i < 300; ++i) {
                    settings::value("timeHex", "1");
                    settings::setValue(QString("key%1").arg(t), QString::number(i), i % 50 == 0);
                }
            });
        for (std::thread &thread : threads)
            thread.join();
        settings::save();
        settings::load(folder.settingsPath());
        for (int t = 0; t < 3; ++t)
            QCOMPARE(settings::value(QString("key%1").arg(t), ""), QString("299"));
    }
};

QTEST_GUILESS_MAIN(TestSettingsStore)
#include "test_settingsstore.moc"
