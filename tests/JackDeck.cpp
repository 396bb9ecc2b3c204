// A deck on a JACK server, for the tests with real plug-in hosts: rolls the transport over a
// stretch of the timeline, plays a file into a plug-in at its place, and records what comes out of
// it. Or it leaves the transport to a workstation, and records until it is told to end.

#include <jack/jack.h>
#include <jack/transport.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "SoundFile.h"

namespace {

constexpr std::chrono::milliseconds kTurn{5};
constexpr std::chrono::seconds kPatience{20};
constexpr int kListenSeconds = 180;

/// One client of the server, with a port for each channel.
struct CDeck {
    jack_client_t* client = nullptr;
    std::vector<jack_port_t*> ports;
    CSoundFile sound;
    std::int64_t lPosition = 0;  ///< of the sound's first frame on the timeline
    std::atomic<std::int64_t> lReached{-1};
    std::atomic<int> nXruns{0};

    CDeck(char const* szName, unsigned long flags, int nChannels, JackProcessCallback process) {
        client = jack_client_open(szName, JackNoStartServer, nullptr);
        if (client == nullptr) throw std::runtime_error("no JACK server");
        for (int nChannel = 1; nChannel <= nChannels; ++nChannel) {
            const std::string strName = "channel_" + std::to_string(nChannel);
            ports.push_back(
                jack_port_register(client, strName.c_str(), JACK_DEFAULT_AUDIO_TYPE, flags, 0));
        }
        jack_set_process_callback(client, process, this);
        jack_set_xrun_callback(client, CountXrun, this);
    }
    ~CDeck() { jack_client_close(client); }
    CDeck(CDeck const&) = delete;
    CDeck& operator=(CDeck const&) = delete;

    void Activate() {
        if (jack_activate(client) != 0) throw std::runtime_error("JACK does not take the client");
    }

    static int CountXrun(void* deck) {
        ++static_cast<CDeck*>(deck)->nXruns;
        return 0;
    }

    /// Where the cycle is on the timeline; less than 0 when the transport does not roll.
    std::int64_t Position() const {
        jack_position_t position{};
        if (jack_transport_query(client, &position) != JackTransportRolling) return -1;
        return position.frame;
    }
};

int Play(jack_nframes_t nFrames, void* data) {
    CDeck& deck = *static_cast<CDeck*>(data);
    const std::int64_t lAt = deck.Position();
    for (std::size_t nChannel = 0; nChannel < deck.ports.size(); ++nChannel) {
        auto* out = static_cast<float*>(jack_port_get_buffer(deck.ports[nChannel], nFrames));
        for (jack_nframes_t nFrame = 0; nFrame < nFrames; ++nFrame) {
            const std::int64_t lFrame = lAt + nFrame - deck.lPosition;
            const bool fInside = lAt >= 0 && lFrame >= 0 && lFrame < deck.sound.Frames();
            out[nFrame] =
                fInside
                    ? deck.sound
                          .samples[lFrame * deck.sound.nChannels + nChannel % deck.sound.nChannels]
                    : 0.0F;
        }
    }
    return 0;
}

int Record(jack_nframes_t nFrames, void* data) {
    CDeck& deck = *static_cast<CDeck*>(data);
    const std::int64_t lAt = deck.Position();
    if (lAt < 0) return 0;
    for (std::size_t nChannel = 0; nChannel < deck.ports.size(); ++nChannel) {
        auto const* in =
            static_cast<float const*>(jack_port_get_buffer(deck.ports[nChannel], nFrames));
        for (jack_nframes_t nFrame = 0; nFrame < nFrames; ++nFrame) {
            const std::int64_t lFrame = lAt + nFrame - deck.lPosition;
            if (lFrame < 0 || lFrame >= deck.sound.Frames()) continue;
            deck.sound.samples[lFrame * deck.sound.nChannels + nChannel] = in[nFrame];
        }
    }
    deck.lReached = lAt + nFrames;
    return 0;
}

// What comes in, wherever the transport is, until the file is full.
int Listen(jack_nframes_t nFrames, void* data) {
    CDeck& deck = *static_cast<CDeck*>(data);
    auto const* in = static_cast<float const*>(jack_port_get_buffer(deck.ports[0], nFrames));
    const std::int64_t lReached = std::max<std::int64_t>(deck.lReached, 0);
    const std::int64_t lFrames = std::min<std::int64_t>(nFrames, deck.sound.Frames() - lReached);
    std::copy_n(in, lFrames, deck.sound.samples.begin() + lReached);
    deck.lReached = lReached + lFrames;
    return 0;
}

volatile std::sig_atomic_t s_nEnd = 0;

void End(int) {
    s_nEnd = 1;
}

template <typename Condition>
void WaitFor(char const* szWhat, std::chrono::milliseconds limit, Condition condition) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) throw std::runtime_error(szWhat);
        std::this_thread::sleep_for(kTurn);
    }
}

// Connects the deck's ports with a plug-in's, "<client>:in_1" and so on, as soon as they are there.
void Connect(CDeck& deck, std::string const& strPlugIn, bool fToPlugIn) {
    for (std::size_t nChannel = 0; nChannel < deck.ports.size(); ++nChannel) {
        const std::string strOwn = jack_port_name(deck.ports[nChannel]);
        const std::string strTheirs =
            strPlugIn + (fToPlugIn ? ":in_" : ":out_") + std::to_string(nChannel + 1);
        WaitFor(("no port " + strTheirs).c_str(), kPatience,
                [&] { return jack_port_by_name(deck.client, strTheirs.c_str()) != nullptr; });
        char const* szFrom = fToPlugIn ? strOwn.c_str() : strTheirs.c_str();
        char const* szTo = fToPlugIn ? strTheirs.c_str() : strOwn.c_str();
        if (jack_connect(deck.client, szFrom, szTo) != 0) {
            throw std::runtime_error("cannot connect " + strTheirs);
        }
    }
}

/// A port of this name is there and takes the connection, or gives it.
void ConnectPort(CDeck& deck, std::string const& strOther, bool fToOther) {
    WaitFor(("no port " + strOther).c_str(), kPatience,
            [&] { return jack_port_by_name(deck.client, strOther.c_str()) != nullptr; });
    const std::string strOwn = jack_port_name(deck.ports[0]);
    std::string const& strFrom = fToOther ? strOwn : strOther;
    std::string const& strTo = fToOther ? strOther : strOwn;
    if (jack_connect(deck.client, strFrom.c_str(), strTo.c_str()) != 0) {
        throw std::runtime_error("cannot connect " + strOther);
    }
}

struct CListening {
    std::string strFrom;
    std::string strRecord;
    std::string strPlay;
    std::string strInto;
    std::int64_t lPlayAt = 0;
};

// One channel each way; the transport is somebody else's.
int ListenUntilTold(CListening const& listening) {
    CDeck recorder("deck-listener", JackPortIsInput, 1, Listen);
    recorder.sound.nSampleRate = static_cast<int>(jack_get_sample_rate(recorder.client));
    recorder.sound.samples.resize(std::size_t{kListenSeconds} * recorder.sound.nSampleRate);
    std::unique_ptr<CDeck> player;
    if (!listening.strInto.empty()) {
        player = std::make_unique<CDeck>("deck-player", JackPortIsOutput, 1, Play);
        player->sound = ReadSoundFile(listening.strPlay);
        player->lPosition = listening.lPlayAt;
        player->Activate();
        ConnectPort(*player, listening.strInto, true);
    }
    std::signal(SIGINT, End);
    std::signal(SIGTERM, End);
    recorder.Activate();
    ConnectPort(recorder, listening.strFrom, false);
    std::printf("listening\n");
    std::fflush(stdout);
    while (s_nEnd == 0) std::this_thread::sleep_for(kTurn);
    jack_deactivate(recorder.client);
    recorder.sound.samples.resize(
        static_cast<std::size_t>(std::max<std::int64_t>(recorder.lReached, 0)));
    WriteSoundFile(listening.strRecord, recorder.sound);
    std::printf("dropouts: %d\n", recorder.nXruns.load());
    return 0;
}

// Where the transport is, whether it rolls or not.
int TellPosition() {
    const CDeck deck("deck-watch", JackPortIsInput, 0, Listen);
    jack_position_t position{};
    jack_transport_query(deck.client, &position);
    std::printf("%u\n", position.frame);
    return 0;
}

struct CRoll {
    std::string strPlugIn;
    std::string strPlay;
    std::string strRecord;
    std::int64_t lPlayAt = 0;
    std::int64_t lFrom = 0;
    std::int64_t lFrames = 48000;
    int nChannels = 1;
};

int Roll(CRoll const& roll) {
    CDeck player("deck-player", JackPortIsOutput, roll.nChannels, Play);
    CDeck recorder("deck-recorder", JackPortIsInput, roll.nChannels, Record);
    if (!roll.strPlay.empty()) player.sound = ReadSoundFile(roll.strPlay);
    player.lPosition = roll.lPlayAt;
    recorder.lPosition = roll.lFrom;
    recorder.sound.nChannels = roll.nChannels;
    recorder.sound.nSampleRate = static_cast<int>(jack_get_sample_rate(recorder.client));
    recorder.sound.samples.resize(roll.lFrames * roll.nChannels);
    player.Activate();
    recorder.Activate();
    Connect(player, roll.strPlugIn, true);
    Connect(recorder, roll.strPlugIn, false);

    jack_transport_stop(player.client);
    jack_transport_locate(player.client, static_cast<jack_nframes_t>(roll.lFrom));
    jack_transport_start(player.client);
    const auto length = std::chrono::milliseconds(1000 * roll.lFrames / recorder.sound.nSampleRate);
    WaitFor("the transport does not roll", length + kPatience,
            [&] { return recorder.lReached >= roll.lFrom + roll.lFrames; });
    jack_transport_stop(player.client);
    // The stop has to reach everybody before the decks go.
    WaitFor("the transport does not stop", kPatience, [&] { return player.Position() < 0; });
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    jack_deactivate(recorder.client);
    if (!roll.strRecord.empty()) WriteSoundFile(roll.strRecord, recorder.sound);
    std::printf("dropouts: %d\n", recorder.nXruns.load());
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app("Rolls the transport of a JACK server and plays and records at its position.");
    CRoll roll;
    CListening listening;
    app.add_option("plug-in", roll.strPlugIn, "JACK client of the plug-in");
    app.add_option("--listen", listening.strFrom,
                   "leave the transport alone, and record this port until told to end");
    app.add_option("--into", listening.strInto, "with --listen: the port to play into");
    app.add_option("--play", roll.strPlay, "sound file to play");
    app.add_option("--play-at", roll.lPlayAt, "where its first frame is");
    app.add_option("--record", roll.strRecord, "WAV file for what comes out");
    app.add_option("--from", roll.lFrom, "where rolling begins");
    app.add_option("--frames", roll.lFrames, "how far to roll");
    app.add_option("--channels", roll.nChannels, "channels of the plug-in");
    bool fPosition = false;
    app.add_flag("--position", fPosition, "print where the transport is");
    CLI11_PARSE(app, argc, argv);
    try {
        if (fPosition) return TellPosition();
        if (!listening.strFrom.empty()) {
            listening.strRecord = roll.strRecord;
            listening.strPlay = roll.strPlay;
            listening.lPlayAt = roll.lPlayAt;
            return ListenUntilTold(listening);
        }
        return Roll(roll);
    } catch (std::exception const& failure) {
        std::fprintf(stderr, "jack-deck: %s\n", failure.what());
        return 1;
    }
}
