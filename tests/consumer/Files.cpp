#include <cstdio>

#include "FileIO/FileIO.h"
#include "FileIO/FileName.h"

int main() {
    const CFileName file("/takes/guide.wav");
    std::puts(file.GetExtension().c_str());
    return file.path.path == "/takes" ? 0 : 1;
}
