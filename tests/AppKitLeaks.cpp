// What AppKit keeps until the process ends is no leak of ours. Only the leak checker calls these.

extern "C" const char* __lsan_default_suppressions() {
    return "leak:libobjc\nleak:libgnustep\n";
}

extern "C" const char* __lsan_default_options() {
    return "print_suppressions=0";
}
