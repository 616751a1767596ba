// A Kestrix.dll that lacks two of its ordinals (see incomplete.def).
extern "C" unsigned answer()
{
    return 0;
}
