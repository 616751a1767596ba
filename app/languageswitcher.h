// The translation catalogue in force, and the language code that goes with it.
#pragma once

#include <QTranslator>

#include <memory>

class LanguageSwitcher
{
public:
    LanguageSwitcher() = default;
    LanguageSwitcher(const LanguageSwitcher &) = delete;
    LanguageSwitcher &operator=(const LanguageSwitcher &) = delete;
    ~LanguageSwitcher();

    // Loads the catalogue that the settings name and sets the code. A missing one changes nothing.
    void start();
    // Switches to a language: its catalogue replaces the old one, the code is set and the choice stored.
    // false: the catalogue cannot be loaded, and everything is as before.
    bool switchTo(unsigned code);

private:
    bool install(const QString &catalogue);

    std::unique_ptr<QTranslator> translator_;
    std::unique_ptr<QTranslator> toolkitTranslator_; // the toolkit's own texts, where its catalogue is there
};
