// Stands in for the program that shows a plug-in's window, without one: does what its name's last
// word says, so that a plug-in meets windows of every kind.

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "platform/ChildProgram.h"
#include "plugin/WindowRecords.h"
#include "window/PlugInMirror.h"
#include "window/PlugInWatch.h"

namespace {

void Pause() {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
}

void SleepForever() {
    for (;;) pause();
}

// Turns until the plug-in goes; `eachTurn` may end it before, with false.
void Turn(CPlugInMirror& plugIn, std::function<bool()> const& eachTurn) {
    while (plugIn.Hear() && eachTurn()) {
        plugIn.ViewTurned();
        Pause();
    }
}

void Turns(CPlugInMirror& plugIn) {
    Turn(plugIn, [] { return true; });
}

// Has the next take in hands from then on.
void AwaitTake(CPlugInMirror& plugIn) {
    Turn(plugIn, [&plugIn] { return !plugIn.PickTake(); });
}

void HandsOver(CPlugInMirror& plugIn) {
    AwaitTake(plugIn);
    plugIn.TakeHandled(4);
    Turns(plugIn);
}

void PutsBack(CPlugInMirror& plugIn) {
    AwaitTake(plugIn);
    plugIn.TakePutBack(TakeFate::Unknown);
    Turns(plugIn);
}

void Holds(CPlugInMirror& plugIn) {
    AwaitTake(plugIn);
    Turns(plugIn);
}

void Hangs(CPlugInMirror& plugIn) {
    AwaitTake(plugIn);
    SleepForever();
}

void Crashes(CPlugInMirror& plugIn) {
    AwaitTake(plugIn);
    std::abort();
}

void Sets(CPlugInMirror& plugIn) {
    plugIn.SetControl(portCapture, 1);
    plugIn.SetTrack(3);
    Turns(plugIn);
}

void Closes(CPlugInMirror& plugIn) {
    plugIn.SayClosed();
}

// Says which guide it would name.
void Names(CPlugInMirror& plugIn) {
    Turn(plugIn, [&plugIn] { return !plugIn.Guide(); });
    CTake const& take = plugIn.Guide()->take;
    plugIn.Report(PlugInResult::Ready,
                  std::to_string(take.lPosition) + "+" + std::to_string(take.lFrames));
    Turns(plugIn);
}

void Fails(CPlugInMirror& plugIn) {
    plugIn.Report(PlugInResult::WindowFailed, "No window can be shown: a reason");
}

// Shows by its reports that it was raised.
void Raised(CPlugInMirror& plugIn) {
    Turn(plugIn, [&plugIn] {
        if (plugIn.PickRaise()) plugIn.Report(PlugInResult::Ready, "raised");
        return true;
    });
}

// Says what a test wants to know of how it was started.
void Looks(CPlugInMirror& plugIn) {
    std::string strText = plugIn.Opened().title.Get() + "|";
    for (auto const& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        const std::string strTarget = std::filesystem::read_symlink(entry.path()).string();
        const bool fOwn = strTarget.find("/proc/") == 0;
        if (!fOwn && std::stoi(entry.path().filename()) >= kChildDescriptor) strText += strTarget;
    }
    plugIn.Report(PlugInResult::Ready, strText.substr(0, strText.find(":[")));
    Turns(plugIn);
}

struct CBehaviour {
    char const* szName;
    void (*act)(CPlugInMirror&);
};

constexpr CBehaviour kBehaviours[] = {
    {"turns", Turns}, {"hands-over", HandsOver}, {"puts-back", PutsBack}, {"holds", Holds},
    {"hangs", Hangs}, {"crashes", Crashes},      {"sets", Sets},          {"closes", Closes},
    {"fails", Fails}, {"raised", Raised},        {"looks", Looks},        {"names", Names},
};

int Run(std::string const& strBehaviour) {
    CRecordSocket socket(kChildDescriptor);
    if (strBehaviour == "old") {
        const CRecordHead head{kWindowVersion + 1, WindowRecord::Turn};
        socket.Send(&head, sizeof(head));
        SleepForever();
    }
    CPlugInMirror plugIn(socket);
    if (!plugIn.Begin()) return 1;
    if (strBehaviour != "hangs") {
        EndWithPlugIn(socket.Descriptor(), plugIn.Opened().nWorkstation);
    }
    for (CBehaviour const& behaviour : kBehaviours) {
        if (strBehaviour == behaviour.szName) behaviour.act(plugIn);
    }
    return 0;
}

}  // namespace

int main(int, char** argv) {
    const std::string strName = std::filesystem::path(argv[0]).filename();
    return Run(strName.substr(strName.find('-') + 1));
}
