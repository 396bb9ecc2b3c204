# The one table of the plug-ins: their kinds, ports, modes and results. The Turtle files and
# PlugInTable.h are made from it.

set(TAVARIN_PLUGIN_URI "urn:tavarin:pro")

# kind | URI part | name | what it is for
set(TAVARIN_PLUGIN_KINDS
    "Link|link|Tavarin Link|Hands what it captures to a track of Tavarin Pro and plays what comes back."
    "APT|apt|Tavarin APT Link|Captures a guide and a dub, has Tavarin Pro align the dub with the guide, and plays the aligned dub."
    "Doubler|doubler|Tavarin Doubler Link|Captures a voice, has Tavarin Pro double it, and plays the doubled voice.")

# channels | URI part | name part
set(TAVARIN_PLUGIN_WIDTHS "1||" "2|:stereo| (stereo)")

# what it is in the code | symbol | name | form | default | minimum | maximum | what it does
set(TAVARIN_PLUGIN_PORTS
    "Control|control|Control|position||||Where the transport of the workstation is."
    "Notify|notify|Notify|message||||Every result in words."
    "Capture|capture|Capture|toggle|0|0|1|While on, the input is captured as long as the transport rolls."
    "Return|return|Return|toggle|0|0|1|Switching it on fetches the host's selected region. While on, the region is heard in place of the input."
    "Mode|mode|Mode|modes|0|0|1|What Return asks the host for."
    "Track|track|Track|track|0|0|255|The host's track that takes go to, from 0. APT: 0 is the guide, 1 the dub. Doubler: not used."
    "Freewheel|freewheel|Freewheel|freewheel|0|0|1|Set by workstations that do not run in real time."
    "Result|result|Result|results|0|0|16|The result of the last command."
    "Load|load|Load|percent|0|0|100|The longest that a cycle took of its time, since activation.")

set(TAVARIN_PLUGIN_MODES
    "RenderAndExport|Render and export|the host renders its selected region first and says where it is"
    "Export|Export|the region is exported as it is and plays where the last take began")

# what it is in the code | name
set(TAVARIN_PLUGIN_RESULTS
    "Ready|Ready"
    "Capturing|Capturing"
    "TakeWritten|Take captured"
    "HandedOver|Take handed over"
    "Duplicate|Same audio captured before"
    "NoHost|No host or session"
    "HostRefused|Refused by the host"
    "Overflow|Take stopped, disk too slow"
    "DiskFailed|Take stopped, disk failed"
    "Returned|Region returned"
    "ReturnRefused|Return refused"
    "StateRestored|State restored"
    "StateUnreadable|State not readable"
    "WindowFailed|No window"
    "NoAnswer|No answer"
    "NotAligned|Take handed over, no guide for it"
    "Twin|Captured by another plug-in")
