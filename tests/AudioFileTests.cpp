#include "host/AudioFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>

#include "host/AtomicFile.h"
#include "tests/TemporaryDirectory.h"
#include "tests/TestAudio.h"

namespace fs = std::filesystem;

namespace {

class CAudioFileTest : public testing::Test {
protected:
    std::string Path(std::string const& strName) const {
        return m_Directory.Path() + "/" + strName;
    }

    static std::string ReasonFor(std::string const& strPath) {
        try {
            ProbeAudioFile(strPath);
        } catch (CAudioFileError const& error) {
            return error.what();
        }
        return {};
    }

    /// The lowest free descriptor: the same before and after when nothing leaks.
    static int FreeDescriptor() {
        int const nFile = open("/dev/null", O_RDONLY);
        close(nFile);
        return nFile;
    }

    CTemporaryDirectory m_Directory;
};

}  // namespace

TEST_F(CAudioFileTest, FloatsComeBackAsTheyWere) {
    CAudio const audio = TestAudio::Phrase(20001, 0, 140.0, 3);
    WriteAudioFile(Path("a.wav"), audio);
    CAudioFile file(Path("a.wav"));
    EXPECT_EQ(file.Info().m_lFrames, 20001);
    EXPECT_EQ(file.Info().m_nChannels, 3);
    EXPECT_EQ(file.Info().m_nSampleRate, 48000);
    EXPECT_EQ(file.Read(0, 20001, {0, 1, 2}).m_Channels, audio.m_Channels);
}

TEST_F(CAudioFileTest, TwentyFourBitsComeBackWithinTheirStep) {
    CAudio const audio = TestAudio::Phrase(5000);
    WriteAudioFile(Path("a.wav"), audio, SampleFormat::Pcm24);
    CAudio const read = CAudioFile(Path("a.wav")).Read(0, 5000, {0});
    for (std::size_t i = 0; i < 5000; ++i)
        ASSERT_NEAR(read.m_Channels[0][i], audio.m_Channels[0][i], 1.0 / (1 << 22));
}

TEST_F(CAudioFileTest, AFileBelowFourGibibytesIsPlainWav) {
    WriteAudioFile(Path("a.wav"), TestAudio::Phrase(5000));
    std::ifstream file(Path("a.wav"), std::ios::binary);
    char header[12]{};
    ASSERT_TRUE(file.read(header, sizeof(header)));
    EXPECT_EQ(std::string_view(header, 4), "RIFF");
    EXPECT_EQ(std::string_view(header + 8, 4), "WAVE");
}

TEST_F(CAudioFileTest, ChannelsCanBePickedAndReordered) {
    CAudio audio = TestAudio::Silence(10, 3);
    for (int n = 0; n < 3; ++n)
        audio.m_Channels[static_cast<std::size_t>(n)][0] = 0.1f * static_cast<float>(n);
    WriteAudioFile(Path("a.wav"), audio);
    CAudio const read = CAudioFile(Path("a.wav")).Read(0, 1, {2, 0});
    EXPECT_EQ(read.m_Channels, (std::vector<std::vector<float>>{{0.2f}, {0.0f}}));
    EXPECT_THROW(CAudioFile(Path("a.wav")).Read(0, 1, {3}), CAudioFileError);
    EXPECT_THROW(CAudioFile(Path("a.wav")).Read(0, 1, {-1}), CAudioFileError);
}

TEST_F(CAudioFileTest, OutsideTheFileThereIsSilence) {
    CAudio audio = TestAudio::Silence(4);
    audio.m_Channels[0] = {0.1f, 0.2f, 0.3f, 0.4f};
    WriteAudioFile(Path("a.wav"), audio);
    CAudioFile file(Path("a.wav"));
    EXPECT_EQ(file.Read(-2, 8, {0}).m_Channels[0],
              (std::vector<float>{0, 0, 0.1f, 0.2f, 0.3f, 0.4f, 0, 0}));
    EXPECT_EQ(file.Read(10, 2, {0}).m_Channels[0], (std::vector<float>{0, 0}));
    EXPECT_EQ(file.Read(-10, 2, {0}).m_Channels[0], (std::vector<float>{0, 0}));
    EXPECT_EQ(file.Read(1, 0, {0}).Frames(), 0);
    EXPECT_EQ(file.Read(1, -5, {0}).Frames(), 0);
    EXPECT_EQ(file.Read(2, 2, {0}).m_Channels[0], (std::vector<float>{0.3f, 0.4f}));
}

TEST_F(CAudioFileTest, FailuresNameTheFileAndTheReason) {
    EXPECT_NE(ReasonFor(Path("none.wav")).find(Path("none.wav")), std::string::npos);
    EXPECT_NE(ReasonFor(Path("none.wav")).find("No such file"), std::string::npos);
    EXPECT_NE(ReasonFor(m_Directory.Path()).find("not a regular file"), std::string::npos);
    std::ofstream(Path("junk.wav")) << "RIFFxxxxWAVEjunk";
    EXPECT_NE(ReasonFor(Path("junk.wav")).find("not readable as audio"), std::string::npos);
    EXPECT_NE(ReasonFor(std::string("a\0b", 3)).find("NUL"), std::string::npos);
    EXPECT_NE(ReasonFor(std::string(5000, 'x')), "");
}

TEST_F(CAudioFileTest, FailuresLeaveNoDescriptorOpen) {
    std::ofstream(Path("junk.wav")) << "junk";
    int const nFree = FreeDescriptor();
    for (int n = 0; n < 50; ++n) {
        ReasonFor(Path("junk.wav"));
        ReasonFor(m_Directory.Path());
    }
    EXPECT_EQ(FreeDescriptor(), nFree);
}

TEST_F(CAudioFileTest, AFileThatWasCutShortIsReadAsFarAsItGoesOrRefused) {
    WriteAudioFile(Path("a.wav"), TestAudio::Phrase(10000));
    fs::resize_file(Path("a.wav"), 20000);
    try {
        CAudioFile file(Path("a.wav"));
        EXPECT_LT(file.Info().m_lFrames, 5001);
        EXPECT_EQ(file.Read(0, 10000, {0}).Frames(), 10000);
    } catch (CAudioFileError const& error) {
        EXPECT_NE(std::string(error.what()).find(Path("a.wav")), std::string::npos);
    }
}

TEST_F(CAudioFileTest, AFileAppearsWholeOrNotAtAll) {
    {
        CAudioWriter writer(Path("a.wav"), 48000, 1, SampleFormat::Float32);
        writer.Write(TestAudio::Phrase(1000));
        EXPECT_FALSE(fs::exists(Path("a.wav")));
    }
    EXPECT_TRUE(fs::is_empty(m_Directory.Path()));
    EXPECT_THROW(WriteAudioFile(Path("none/a.wav"), TestAudio::Phrase(10)), CAudioFileError);
    EXPECT_THROW(WriteAudioFile(Path("a.wav"), CAudio{48000, {}}), CAudioFileError);
    EXPECT_TRUE(fs::is_empty(m_Directory.Path()));
}

TEST_F(CAudioFileTest, ContentIsComparedBySamples) {
    CAudio audio = TestAudio::Phrase(40000);
    WriteAudioFile(Path("a.wav"), audio);
    WriteAudioFile(Path("b.wav"), audio);
    audio.m_Channels[0][39999] += 0.01f;
    WriteAudioFile(Path("c.wav"), audio);
    CAudioRange const a{Path("a.wav"), 0, 40000, {0}};
    EXPECT_TRUE(SameAudio(a, {Path("b.wav"), 0, 40000, {0}}));
    EXPECT_FALSE(SameAudio(a, {Path("c.wav"), 0, 40000, {0}}));
    EXPECT_FALSE(SameAudio(a, {Path("b.wav"), 0, 39999, {0}}));
    EXPECT_FALSE(SameAudio({Path("a.wav"), 0, 39999, {0}}, {Path("b.wav"), 1, 40000, {0}}));
    EXPECT_THROW(SameAudio(a, {Path("b.wav"), 1, 40001, {0}}), CAudioFileError);
    EXPECT_TRUE(SameAudio({Path("a.wav"), 5, 9, {0}}, {Path("c.wav"), 5, 9, {0}}));
}

TEST_F(CAudioFileTest, ASampleThatIsNoNumberEqualsItself) {
    CAudio audio = TestAudio::Phrase(100);
    audio.m_Channels[0][50] = std::numeric_limits<float>::quiet_NaN();
    WriteAudioFile(Path("a.wav"), audio);
    EXPECT_TRUE(SameAudio({Path("a.wav"), 0, 100, {0}}, {Path("a.wav"), 0, 100, {0}}));
}

TEST_F(CAudioFileTest, AFileIsReplacedAsOneStep) {
    WriteFileAtomically(Path("x.txt"), "old");
    WriteFileAtomically(Path("x.txt"), "new");
    std::string strText;
    std::ifstream(Path("x.txt")) >> strText;
    EXPECT_EQ(strText, "new");
    EXPECT_THROW(WriteFileAtomically(Path("none/x.txt"), "x"), std::system_error);
    fs::create_directory(Path("dir"));
    EXPECT_THROW(WriteFileAtomically(Path("dir"), "x"), std::system_error);
    EXPECT_EQ(std::distance(fs::directory_iterator(m_Directory.Path()), {}), 2);
}

TEST_F(CAudioFileTest, AFileIsMadeUnderTheUmaskAndThroughLinks) {
    mode_t const nBefore = umask(0027);
    WriteFileAtomically(Path("made"), "new");
    umask(nBefore);
    using fs::perms;
    EXPECT_EQ(fs::status(Path("made")).permissions(),
              perms::owner_read | perms::owner_write | perms::group_read);
    fs::permissions(Path("made"), perms::owner_read | perms::owner_write);
    WriteFileAtomically(Path("made"), "newer");
    EXPECT_EQ(fs::status(Path("made")).permissions(), perms::owner_read | perms::owner_write)
        << "what is replaced keeps its own";

    fs::create_directory(Path("real"));
    fs::create_symlink("real/file", Path("link"));
    WriteFileAtomically(Path("link"), "new");
    EXPECT_TRUE(fs::is_symlink(Path("link")));
    EXPECT_EQ(fs::file_size(Path("real/file")), 3u);
}
