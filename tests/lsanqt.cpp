// Leaks that are not this program's: what the off-screen display and the font library keep until the process ends.
extern "C" const char *__lsan_default_suppressions()
{
    return "leak:libqoffscreen.so\nleak:libfontconfig.so\n";
}
