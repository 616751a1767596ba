// A language in which every text of the catalogues is itself in brackets; in force while it lives.
#pragma once

#include <QCoreApplication>
#include <QTranslator>

class BracketingTranslator : public QTranslator
{
public:
    BracketingTranslator() { QCoreApplication::installTranslator(this); }
    ~BracketingTranslator() override { QCoreApplication::removeTranslator(this); }
    BracketingTranslator(const BracketingTranslator &) = delete;
    BracketingTranslator &operator=(const BracketingTranslator &) = delete;

    bool isEmpty() const override { return false; }
    QString translate(const char *, const char *source, const char *, int) const override
    {
        return QLatin1Char('[') + QString::fromUtf8(source) + QLatin1Char(']');
    }
};
