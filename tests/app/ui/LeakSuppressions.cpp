// Under LeakSanitizer: fontconfig keeps a cache for the life of the process that it never
// frees, and Qt loads it with the first font. That is the library's, not ours.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libfontconfig.so\n";
}
