// Leaks that are not this program's: what the off-screen display and the font library keep until the process ends, and
// the animation of a line edit's clear button when the edit goes before it is over.
extern "C" const char *__lsan_default_suppressions()
{
    return "leak:libqoffscreen.so\nleak:libfontconfig.so\nleak:QPropertyAnimation::QPropertyAnimation\n";
}
