#include "app/languageswitcher.h"

#include "device/apppaths.h"
#include "device/language.h"
#include "device/settingsstore.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QSettings>

namespace
{

QString languageFolder()
{
    return applicationDir() + QStringLiteral("/language");
}

std::unique_ptr<QTranslator> loadToolkitTexts(int code)
{
    static const char *const names[LanguageCount] = {"qtbase_zh_CN", "qtbase_zh_TW", "qtbase_en"};
    auto translator = std::make_unique<QTranslator>();
    const QString name = QLatin1String(names[code]);
    if (translator->load(name, languageFolder()) ||
        translator->load(name, QLibraryInfo::location(QLibraryInfo::TranslationsPath)))
        return translator;
    return nullptr;
}

void replace(std::unique_ptr<QTranslator> &current, std::unique_ptr<QTranslator> next)
{
    if (current)
        QCoreApplication::removeTranslator(current.get());
    current = std::move(next);
    if (current)
        QCoreApplication::installTranslator(current.get());
}

} // namespace

LanguageSwitcher::~LanguageSwitcher()
{
    replace(translator_, nullptr);
    replace(toolkitTranslator_, nullptr);
}

bool LanguageSwitcher::install(const QString &catalogue)
{
    auto next = std::make_unique<QTranslator>();
    if (!next->load(languageFolder() + QLatin1Char('/') + catalogue))
        return false;
    const int code = catalogueNames().indexOf(catalogue);
    if (code >= 0) {
        setLanguageCode(static_cast<unsigned>(code));
        replace(toolkitTranslator_, loadToolkitTexts(code));
    }
    replace(translator_, std::move(next));
    return true;
}

void LanguageSwitcher::start()
{
    install(settings::value(QStringLiteral("Language"), catalogueNames().at(SimplifiedChinese)));
}

bool LanguageSwitcher::switchTo(unsigned code)
{
    const QString catalogue = catalogueNames().value(static_cast<int>(code));
    if (catalogue.isEmpty() || !install(catalogue))
        return false;
    settings::setValue(QStringLiteral("Language"), catalogue, true);
    QSettings file(languageFolder() + QStringLiteral("/config.ini"), QSettings::IniFormat);
    file.setValue(QStringLiteral("LAST/Sel"), code);
    return true;
}
