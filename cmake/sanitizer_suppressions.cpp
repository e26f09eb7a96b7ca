// Linked into every program of a sanitizer build (QUORVEX_SANITIZE): leaks
// that belong to the libraries below us, so that the leak check at exit
// speaks only of our own. Qt's offscreen platform never frees its screen.
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libqoffscreen.so\n";
}
