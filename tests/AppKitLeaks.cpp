// What AppKit keeps until the process ends is no leak of ours. Only the leak checker calls this.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libobjc\nleak:libgnustep\n";
}
