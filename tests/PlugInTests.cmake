# Tests of the LV2 plug-ins. Those with hosts are skipped with one line where a host is missing.

if(JACK_FOUND AND CLI11_FOUND)
    add_executable(jack-deck JackDeck.cpp)
    target_link_libraries(jack-deck PRIVATE
        PkgConfig::JACK PkgConfig::SNDFILE CLI11::CLI11 Threads::Threads tavarin_warnings)
endif()
