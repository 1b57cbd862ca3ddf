/// For builds with a leak detector. A GL driver that is unloaded before the program ends takes the
/// pointers to what it keeps for good with it, and a real leak loses its name: so nothing unloads.
extern "C" int dlclose(void* /*handle*/) {
    return 0;
}
