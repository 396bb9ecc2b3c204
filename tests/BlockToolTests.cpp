#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <bit>
#include <cstdlib>
#include <limits>

#include "FileIO/FileName.h"
#include "tests/ByteText.h"
#include "tests/TemporaryDirectory.h"
#include "utils/ParameterBlock.h"

namespace {

struct CResult {
    int status;
    std::string output;
    std::string errors;
};

// Runs the program in a directory of its own.
class BlockTool : public testing::Test {
protected:
    CResult Run(std::string const& arguments) const {
        const std::string command = "cd '" + m_directory.Path() + "' && '" TAVARIN_PROGRAM "' " +
                                    arguments + " > out 2> err";
        const int status = std::system(command.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, m_directory.Read("out"),
                m_directory.Read("err")};
    }

    void Write(std::string const& name, std::vector<unsigned char> const& bytes) const {
        m_directory.Write(name, std::string(bytes.begin(), bytes.end()));
    }

    void Save(CParameterBlock& block, std::string const& name) const {
        const std::string path = m_directory.File(name);
        const CFileName file(&path);
        ASSERT_EQ(0, block.SaveBinarySession("XY", &file));
    }

    CTemporaryDirectory m_directory;
};

class TimecodeTool : public BlockTool {};

CParameterBlock Sample() {
    CParameterBlock code;
    code.AddParameter("Mod", 1);
    CParameterBlock block;
    block.name = "Top";
    block.AddParameter("Text", "Gap \"between\" \xE2\x82\xAC\n");
    block.AddParameter("NoUtf8", "\xFF\x80z");
    block.AddParameter("Code", &code);
    block.AddParameter("Code", &code);
    block.AddParameter("", -0.0);
    block.AddParameter("Tenth", 0.1);
    block.AddParameter("Tenth", 0.1f);
    block.AddParameter("NaN", std::numeric_limits<double>::quiet_NaN());
    block.AddParameter("OtherNaN", std::bit_cast<double>(0xFFF0123456789ABCULL));
    block.AddParameter("FloatNaN", std::bit_cast<float>(0x7FC00001U));
    block.AddParameter("Infinite", -std::numeric_limits<float>::infinity());
    block.AddParameter("Small", std::numeric_limits<double>::denorm_min());
    block.AddParameter("Min", static_cast<long long>(INT64_MIN));
    block.AddParameter("Max", ~0ULL);
    block.AddParameter("Int", INT32_MIN);
    block.AddParameter("Bool", true);
    block.AddParameter("Empty", static_cast<const char*>(nullptr));
    block.AddParameter("\xFF name", 1);
    return block;
}

TEST_F(BlockTool, ShowsATreeOfTypesNamesAndValues) {
    CParameterBlock block = Sample();
    Save(block, "a.session");
    const CResult result = Run("block dump a.session");
    EXPECT_EQ(0, result.status);
    EXPECT_EQ(
        "session \"XY\", block \"Top\"\n"
        "  string \"Text\" = \"Gap \\\"between\\\" \xE2\x82\xAC\\x0A\"\n"
        "  string \"NoUtf8\" = \"\\xFF\\x80z\"\n"
        "  block \"Code\"\n"
        "    int \"Mod\" = 1\n"
        "  block \"Code\"\n"
        "    int \"Mod\" = 1\n"
        "  double \"\" = -0\n"
        "  double \"Tenth\" = 0.1\n"
        "  float \"Tenth\" = 0.1\n"
        "  double \"NaN\" = nan\n"
        "  double \"OtherNaN\" = -nan\n"
        "  float \"FloatNaN\" = nan\n"
        "  float \"Infinite\" = -inf\n"
        "  double \"Small\" = 5e-324\n"
        "  int64 \"Min\" = -9223372036854775808\n"
        "  uint64 \"Max\" = 18446744073709551615\n"
        "  int \"Int\" = -2147483648\n"
        "  bool \"Bool\" = true\n"
        "  string \"Empty\" = \"\"\n"
        "  int \"\\xFF name\" = 1\n",
        result.output);
    EXPECT_EQ(result.output, Run("block dump --id XY a.session").output);
    EXPECT_EQ(result.output, Run("block dump - < a.session").output);
}

TEST_F(BlockTool, ComesBackFromJsonByteForByte) {
    CParameterBlock block = Sample();
    Save(block, "a.session");
    EXPECT_EQ(0, Run("block dump --json a.session > a.json").status);
    EXPECT_EQ(
        0,
        Run("block dump --json a.session | '" TAVARIN_PROGRAM "' block pack -o b.session").status);
    EXPECT_EQ(m_directory.Read("a.session"), m_directory.Read("b.session"));
    const CResult packed = Run("block dump --json b.session");
    m_directory.Write("b.json", packed.output);
    EXPECT_EQ(m_directory.Read("a.session"), Run("block pack b.json -o -").output);
}

TEST_F(BlockTool, WorksOnBareImages) {
    Write("bare", Bytes("02000000 02000000 01000000 41 05000000 0B000000"));
    EXPECT_EQ("bare block\n  int \"A\" = 5\n  unknown\n", Run("block dump --bare bare").output);
    EXPECT_EQ(0, Run("block dump --bare --json bare > bare.json").status);
    m_directory.Write("bare.json", Run("block dump --bare --json bare").output);
    EXPECT_EQ(0, Run("block pack bare.json -o again").status);
    const std::string again = m_directory.Read("again");
    EXPECT_EQ(Bytes("01000000 02000000 01000000 41 05000000"),
              std::vector<unsigned char>(again.begin(), again.end()));
}

TEST_F(BlockTool, MapsEveryByte) {
    CParameterBlock block;
    block.AddParameter("A", 5);
    Save(block, "a.session");
    const CResult result = Run("block dump --bytes a.session");
    EXPECT_EQ(0, result.status);
    EXPECT_EQ(
        "     0  58 59 00                    identifier \"XY\" and a zero byte\n"
        "     3  64 00 00 00                 version 100\n"
        "     7  02 00 00 00                 size of the names 2\n"
        "    11  01 00 00 00                 number of names 1\n"
        "    15  41 00                       name 1, \"A\"\n"
        "    17  00                          token 0, \"\"\n"
        "    18  01 00 00 00                 number of entries 1\n"
        "    22  02 00 00 00                 type 2, int\n"
        "    26  01                          token 1, \"A\"\n"
        "    27  05 00 00 00                 value 5\n",
        result.output);
}

TEST_F(BlockTool, MapsDamagedImagesAsFarAsTheyGo) {
    CParameterBlock block = Sample();
    Save(block, "a.session");
    const std::string image = m_directory.Read("a.session");
    for (std::size_t size = 3; size < image.size(); size += 7) {
        m_directory.Write("cut", image.substr(0, size));
        const CResult result = Run("block dump --bytes cut");
        EXPECT_EQ(1, result.status) << size;
        EXPECT_NE(std::string::npos, result.output.find("the map ends here")) << size;
    }
}

TEST_F(BlockTool, TellsWhatIsWrongWithAnImage) {
    CParameterBlock block = Sample();
    Save(block, "a.session");
    m_directory.Write("cut", m_directory.Read("a.session").substr(0, 260));
    const CResult cut = Run("block dump cut");
    EXPECT_EQ(1, cut.status);
    EXPECT_NE(std::string::npos, cut.output.find("string \"Text\""));
    EXPECT_NE(std::string::npos, cut.errors.find("the body is damaged"));

    m_directory.Write("text", "no image");
    EXPECT_EQ(1, Run("block dump text").status);
    EXPECT_NE(std::string::npos, Run("block dump text").errors.find("--bare"));
    EXPECT_EQ(1, Run("block dump --id QQ a.session").status);
    EXPECT_EQ(1, Run("block dump --bare a.session").status);
}

TEST_F(BlockTool, TellsWhatItCannotOpen) {
    EXPECT_EQ(2, Run("block dump missing").status);
    EXPECT_NE(std::string::npos, Run("block dump missing").errors.find("cannot open \"missing\""));
    EXPECT_EQ(2, Run("block dump .").status);
    EXPECT_EQ(2, Run("block dump").status);
    EXPECT_EQ(2, Run("block dump --bare --id XY x").status);
}

TEST_F(BlockTool, APipeIsWrittenToAndStaysAPipe) {
    CParameterBlock block = Sample();
    Save(block, "a.session");
    m_directory.Write("a.json", Run("block dump --json a.session").output);
    const std::string pipe = m_directory.File("pipe");
    ASSERT_EQ(0, mkfifo(pipe.c_str(), 0600));
    const int end = open(pipe.c_str(), O_RDONLY | O_NONBLOCK);
    EXPECT_EQ(0, Run("block pack a.json -o pipe").status);
    const std::string image = m_directory.Read("a.session");
    std::string read(image.size() + 1, '\0');
    EXPECT_EQ(static_cast<ssize_t>(image.size()), ::read(end, read.data(), read.size()));
    close(end);
    EXPECT_EQ(image, read.substr(0, image.size()));
    EXPECT_TRUE(std::filesystem::is_fifo(pipe));
}

TEST_F(BlockTool, LeavesTheOldFileWhenItCannotPack) {
    m_directory.Write("old.session", "old");
    m_directory.Write("nameless.json",
                      R"({"format":"session","id":"XY","name":"","parameters":[]})");
    EXPECT_EQ(2, Run("block pack nameless.json -o old.session --force").status);
    m_directory.Write("identity.json", R"({"format":"bare","parameters":[
        {"type":"fileId","name":"A","value":[1,2]}]})");
    EXPECT_EQ(2, Run("block pack identity.json -o old.session --force").status);
    EXPECT_EQ("old", m_directory.Read("old.session"));
    EXPECT_EQ(2, Run("block pack identity.json -o").status);
}

TEST_F(BlockTool, AgreesWithItselfAboutManyUsesOfALongName) {
    // The names of the body unfold to twenty megabytes.
    CParameterBlock block;
    const std::string name(4096, 'n');
    for (int i = 0; i < 5000; ++i) block.AddParameter(name.c_str(), true);
    Save(block, "long.session");
    EXPECT_EQ(0, Run("block dump --bytes long.session").status);
    EXPECT_EQ(0, Run("block dump --json long.session").status);
    EXPECT_EQ(
        0, Run("block dump --json long.session | '" TAVARIN_PROGRAM "' block pack -o again.session")
               .status);
    EXPECT_EQ(m_directory.Read("long.session"), m_directory.Read("again.session"));
}

TEST_F(BlockTool, DoesNotPackANameThatASessionWouldCutOff) {
    m_directory.Write("zero.json",
                      R"({"format": "session", "id": "XY", "name": "", "parameters": [
                          {"type": "bool", "name": "a\u0000b", "value": true}]})");
    const CResult packed = Run("block pack zero.json -o zero.session");
    EXPECT_EQ(2, packed.status);
    EXPECT_NE(std::string::npos, packed.errors.find("zero byte"));
}

TEST_F(BlockTool, ReplacesNoFileUnlessItIsTold) {
    m_directory.Write("old.session", "old");
    m_directory.Write("a.json", R"({"format":"bare","parameters":[]})");
    const CResult refused = Run("block pack a.json -o old.session");
    EXPECT_EQ(2, refused.status);
    EXPECT_NE(std::string::npos, refused.errors.find("is there already")) << refused.errors;
    EXPECT_NE(std::string::npos, refused.errors.find("--force"));
    EXPECT_EQ("old", m_directory.Read("old.session"));
    EXPECT_EQ(0, Run("block pack a.json -o old.session --force").status);
    EXPECT_EQ(4u, m_directory.Read("old.session").size());
}

TEST_F(BlockTool, FilesAreMadeUnderTheUmaskAndThroughLinks) {
    m_directory.Write("a.json", R"({"format":"bare","parameters":[]})");
    const mode_t before = umask(0027);
    EXPECT_EQ(0, Run("block pack a.json -o made").status);
    umask(before);
    struct stat status {};
    ASSERT_EQ(0, stat(m_directory.File("made").c_str(), &status));
    EXPECT_EQ(0640u, status.st_mode & 0777);

    m_directory.MakeDirectory("real");
    std::filesystem::create_symlink("real/file", m_directory.File("link"));
    EXPECT_EQ(0, Run("block pack a.json -o link").status);
    EXPECT_TRUE(std::filesystem::is_symlink(m_directory.File("link")));
    EXPECT_EQ(4u, m_directory.Read("real/file").size());
}

TEST_F(BlockTool, OutputThatCannotBeWrittenIsAnError) {
    CParameterBlock block = Sample();
    Save(block, "a.session");
    for (const char* szCommand :
         {"block dump a.session", "block dump --json a.session", "block dump --bytes a.session",
          "timecode 5", "--version", "--help"}) {
        const CResult result = Run(std::string(szCommand) + " >/dev/full 2>err; exit $? #");
        EXPECT_EQ(2, result.status) << szCommand;
        EXPECT_NE(std::string::npos, result.errors.find("cannot write to standard output"))
            << result.errors;
    }
}

TEST_F(BlockTool, AnImageThatIsCutOffIsDamagedWhereverItIsCut) {
    CParameterBlock block = Sample();
    Save(block, "a.session");
    const std::string image = m_directory.Read("a.session");
    for (std::size_t nLeft = 1; nLeft < image.size(); ++nLeft) {
        if (nLeft < image.size() - 40 && nLeft % 29 != 0) continue;
        m_directory.Write("cut", image.substr(0, nLeft));
        EXPECT_EQ(1, Run("block dump cut").status) << nLeft << " of " << image.size();
    }
    CParameterBlock truth;
    truth.AddParameter("Last", true);
    Save(truth, "truth.session");
    const std::string whole = m_directory.Read("truth.session");
    m_directory.Write("cut", whole.substr(0, whole.size() - 1));
    const CResult cut = Run("block dump cut");
    EXPECT_EQ(1, cut.status) << cut.output;
    EXPECT_NE(std::string::npos, cut.errors.find("a value is cut off")) << cut.errors;
    m_directory.Write("empty");
    EXPECT_EQ(1, Run("block dump empty").status);
    EXPECT_NE(std::string::npos, Run("block dump empty").errors.find("it is empty"));
}

TEST_F(BlockTool, EntriesOfUnknownTypeAreADifference) {
    Write("one", Bytes("02000000 02000000 01000000 41 05000000 0B000000"));
    Write("none", Bytes("01000000 02000000 01000000 41 05000000"));
    const CResult result = Run("block diff --bare one none");
    EXPECT_EQ(1, result.status);
    EXPECT_EQ("~ / entries of unknown type 1 -> 0\n", result.output);
}

TEST_F(BlockTool, PathsThatNobodyCanUseEndWithTwo) {
    std::filesystem::create_symlink("round", m_directory.File("round"));
    for (std::string const& strPath :
         {std::string("round"), std::string(5000, 'x'), std::string("file/below")}) {
        m_directory.Write("file");
        for (const char* szCommand : {"block dump ", "block pack -o out ",
                                      "link capture --track 0 "
                                      "--position 0 ",
                                      "link run "}) {
            const CResult result = Run(szCommand + strPath);
            EXPECT_EQ(2, result.status) << szCommand << strPath.substr(0, 20) << result.errors;
            EXPECT_NE(std::string::npos, result.errors.find("tavarin: ")) << szCommand;
        }
    }
}

TEST_F(BlockTool, WithJsonFailuresAreJsonWithACode) {
    const auto errors = [this](std::string const& strArguments) {
        return Run(strArguments).errors;
    };
    EXPECT_EQ(0u, errors("block dump --json missing").find("{\"advice\":"));
    EXPECT_NE(std::string::npos,
              errors("block dump --json missing").find("\"code\":\"unreadable\""));
    EXPECT_NE(std::string::npos, errors("link --json nonsense").find("\"code\":\"usage\""));
    m_directory.Write("text", "no image");
    EXPECT_NE(std::string::npos, errors("block dump --json text").find("\"code\":\"damaged\""));
}

TEST_F(BlockTool, RefusesJsonThatIsNoBlock) {
    const std::vector<std::string> entries{
        R"({"type":"int","name":"A","value":2147483648})",
        R"({"type":"int","name":"A","value":-2147483649})",
        R"({"type":"int","name":"A","value":1.5})",
        R"({"type":"uint64","name":"A","value":-1})",
        R"({"type":"int64","name":"A","value":9223372036854775808})",
        R"({"type":"double","name":"A","value":"number"})",
        R"({"type":"float","name":"A","value":1e300})",
        R"({"type":"double","name":"A","value":"nan:123"})",
        R"({"type":"bool","name":"A","value":1})",
        R"({"type":"string","name":"A","value":{"hex":"1"}})",
        R"({"type":"string","name":"A","value":{"hex":"zz"}})",
        R"({"type":"colour","name":"A","value":1})",
        R"({"type":"int","value":1})",
        R"({"type":"block","name":"A","parameters":{}})",
        R"({"type":"block","name":"A"})",
        "5",
    };
    for (std::string const& entry : entries) {
        m_directory.Write("bad.json", R"({"format":"bare","parameters":[)" + entry + "]}");
        const CResult result = Run("block pack bad.json -o out.block");
        EXPECT_EQ(2, result.status) << entry;
        EXPECT_EQ(std::string::npos, result.errors.find("json.exception")) << result.errors;
        EXPECT_FALSE(m_directory.Has("out.block")) << entry;
    }
    for (const char* szText : {"{", "[]", "5", "{}", R"({"format":1})", R"({"format":"bare"})",
                               R"({"format":"session","id":5,"name":"","parameters":[]})"}) {
        m_directory.Write("bad.json", szText);
        const CResult result = Run("block pack bad.json -o out.block");
        EXPECT_EQ(2, result.status) << szText;
        EXPECT_EQ(std::string::npos, result.errors.find("exception")) << result.errors;
    }
}

TEST_F(BlockTool, ShowsNoDifferenceBetweenEqualFiles) {
    CParameterBlock block = Sample();
    Save(block, "a.session");
    const CResult result = Run("block diff a.session a.session");
    EXPECT_EQ(0, result.status);
    EXPECT_EQ("", result.output);
}

TEST_F(BlockTool, ShowsDifferences) {
    CParameterBlock first = Sample();
    Save(first, "a.session");
    CParameterBlock second = Sample();
    CParameterBlock* code = nullptr;
    CParameterBlock::position where{};
    ASSERT_TRUE(second.FindFirstParameter("Code", &code, &where));
    ASSERT_TRUE(second.FindNextParameter("Code", &code, &where));
    static_cast<CIntParameter*>(code->parameters[0])->value = 2;
    std::swap(second.parameters[0], second.parameters[1]);
    delete second.parameters.back();
    second.parameters.pop_back();
    second.AddParameter("New", 7LL);
    second.name = "Summit";
    Save(second, "b.session");
    const CResult result = Run("block diff a.session b.session");
    EXPECT_EQ(1, result.status);
    EXPECT_EQ(
        "~ name \"Top\" -> \"Summit\"\n"
        "- /\"\\xFF name\" int 1\n"
        "+ /\"New\" int64 7\n"
        "~ order of the entries of /\n"
        "~ /\"Code\"[1]/\"Mod\" int 1 -> 2\n",
        result.output);
    EXPECT_EQ(2, Run("block diff a.session missing").status);
}

TEST_F(BlockTool, CopesWithBlocksThatNestVeryDeep) {
    constexpr int depth = 20000;
    std::vector<unsigned char> image = Bytes("01000000");
    const std::vector<unsigned char> level = Bytes("06000000 01000000 41 01000000");
    for (int i = 0; i < depth; ++i) image.insert(image.end(), level.begin(), level.end());
    const std::vector<unsigned char> leaf = Bytes("07000000 01000000 42 01");
    image.insert(image.end(), leaf.begin(), leaf.end());
    Write("deep", image);
    EXPECT_EQ(0, Run("block dump --bare deep").status);
    EXPECT_EQ(0, Run("block dump --bare --bytes deep").status);
    m_directory.Write("deep.json", Run("block dump --bare --json deep").output);
    EXPECT_EQ(0, Run("block pack deep.json -o again").status);
    EXPECT_EQ(m_directory.Read("deep"), m_directory.Read("again"));
    EXPECT_EQ(0, Run("block diff --bare deep again").status);
}

TEST_F(BlockTool, GetsOneValue) {
    CParameterBlock block = Sample();
    block.AddParameter("a/b", "slash");
    Save(block, "a.session");
    const std::pair<const char*, const char*> values[] = {
        {"Text", "Gap \"between\" \xE2\x82\xAC\n\n"},
        {"/Code/Mod", "1\n"},
        {"'Code[1]/Mod'", "1\n"},
        {"'/\"Code\"[1]/\"Mod\"'", "1\n"},
        {"Code", "  int \"Mod\" = 1\n"},
        {"Max", "18446744073709551615\n"},
        {"Tenth", "0.1\n"},
        {"'\"a/b\"'", "slash\n"},
        {"'\"\\xFF name\"'", "1\n"},
        {"--json Code",
         "{\"type\": \"block\", \"name\": \"Code\", \"parameters\": [\n"
         "  {\"type\": \"int\", \"name\": \"Mod\", \"value\": 1}\n]}\n"},
        {"--json Bool", "{\"type\": \"bool\", \"name\": \"Bool\", \"value\": true}\n"}};
    for (auto const& [szPath, szValue] : values) {
        const CResult result = Run(std::string("block get a.session ") + szPath);
        EXPECT_EQ(0, result.status) << szPath << result.errors;
        EXPECT_EQ(szValue, result.output) << szPath;
    }
    for (const char* szNone : {"Nobody", "'Code[2]'", "Text/Mod", "Code/Mod/More"}) {
        const CResult result = Run(std::string("block get a.session ") + szNone);
        EXPECT_EQ(1, result.status) << szNone;
        EXPECT_NE(std::string::npos, result.errors.find("has no entry")) << result.errors;
    }
    for (const char* szNoPath : {"''", "/", "Code/", "'Code['", "'Code[x]'", "'\"Code'", "'a\"b'"})
        EXPECT_EQ(2, Run(std::string("block get a.session ") + szNoPath).status) << szNoPath;
}

TEST_F(BlockTool, SetsOneValueAndNothingElse) {
    CParameterBlock block = Sample();
    Save(block, "a.session");
    EXPECT_EQ(0, Run("block set a.session 'Code[1]/Mod' 7 -o b.session").status);
    EXPECT_EQ("~ /\"Code\"[1]/\"Mod\" int 1 -> 7\n", Run("block diff a.session b.session").output);
    EXPECT_EQ(0, Run("block set b.session 'Code[1]/Mod' 1 --force").status);
    EXPECT_EQ(m_directory.Read("a.session"), m_directory.Read("b.session"));

    EXPECT_EQ(0, Run("block set a.session Text 'new  text' -o c.session").status);
    EXPECT_EQ("new  text\n", Run("block get c.session Text").output);
    EXPECT_EQ(0, Run("block set a.session Infinite nan -o d.session").status);
    EXPECT_EQ("nan\n", Run("block get d.session Infinite").output);
    EXPECT_EQ(0, Run("block set a.session Code/New 1e3 --type double -o e.session").status);
    EXPECT_EQ("+ /\"Code\"/\"New\" double 1000\n", Run("block diff a.session e.session").output);

    Write("bare", Bytes("01000000 02000000 01000000 41 05000000"));
    EXPECT_EQ(0, Run("block set --bare bare A 6 -o - > again").status);
    EXPECT_EQ(
        "6\n",
        Run("block set --bare bare A 6 -o - | '" TAVARIN_PROGRAM "' block get --bare - A").output);
}

TEST_F(BlockTool, SetRefusesWhatCannotBeAndReplacesNothingUnlessItIsTold) {
    CParameterBlock block = Sample();
    Save(block, "a.session");
    const std::string before = m_directory.Read("a.session");
    const CResult unasked = Run("block set a.session Int 7");
    EXPECT_EQ(2, unasked.status);
    EXPECT_NE(std::string::npos, unasked.errors.find("is there already")) << unasked.errors;
    for (const char* szWrong :
         {"Int 2147483648", "Int x", "Int 1.5", "Int ''", "Bool 1", "Max -- -1", "Code 5",
          "Small x", "Int 5 --type float", "Nobody 5", "Nobody/A 5 --type int",
          "'New[3]' 5 --type int", "New 5 --type colour", "New x --type int"}) {
        const CResult result = Run(std::string("block set a.session --force ") + szWrong);
        EXPECT_EQ(2, result.status) << szWrong;
        EXPECT_EQ(std::string::npos, result.errors.find("json")) << result.errors;
    }
    EXPECT_EQ(before, m_directory.Read("a.session"));
    Write("unknown", Bytes("02000000 02000000 01000000 41 05000000 0B000000"));
    const CResult unknown = Run("block set --bare unknown A 6 --force");
    EXPECT_EQ(2, unknown.status);
    EXPECT_NE(std::string::npos, unknown.errors.find("would be lost")) << unknown.errors;
}

TEST_F(TimecodeTool, ShowsATimeCode) {
    EXPECT_EQ("samples   96000\nframes    50\ntimecode  00:00:02:00\n",
              Run("timecode 96000").output);
    EXPECT_EQ("samples   96000\nframes    50\ntimecode  00:00:02:00\n", Run("timecode 50f").output);
    EXPECT_EQ("samples   175751040\nframes    91537\ntimecode  01:01:01:12\n",
              Run("timecode 01:01:01:12").output);
    EXPECT_EQ("samples   88200\nframes    48\ntimecode  00:00:02:00\n",
              Run("timecode 00:00:02:00 -r 44100 -f 24").output);
}

TEST_F(TimecodeTool, TakesPlainNumbersOnly) {
    for (const char* szPosition :
         {"0x10", "+5", "nan", "inf", "' 5'", "'5 '", "1e", "1.5.2", "''"}) {
        EXPECT_EQ(Run(std::string("timecode ") + szPosition).status, 2) << szPosition;
    }
    for (const char* szPosition : {"1e3", "1000.", "1000", "0.1e4"}) {
        const CResult result = Run(std::string("timecode ") + szPosition);
        EXPECT_EQ(result.status, 0) << result.errors;
        EXPECT_NE(result.output.find("samples   1000\n"), std::string::npos) << result.output;
    }
}

TEST_F(TimecodeTool, CountsDropFrame) {
    EXPECT_EQ("samples   28799971.2\nframes    17982\ntimecode  00:10:00;00\n",
              Run("timecode 00:10:00:00 --fps 30000/1001 --drop").output);
    EXPECT_EQ("samples   28799971.2\nframes    17982\ntimecode  00:10:00;00\n",
              Run("timecode '00:10:00;00' --fps 30000/1001 --drop").output);
}

TEST_F(TimecodeTool, TellsWhatIsNoPosition) {
    EXPECT_EQ(2, Run("timecode 25:00:00:00").status);
    EXPECT_EQ(2, Run("timecode 00:61:00:00").status);
    EXPECT_EQ(2, Run("timecode 00:00:00").status);
    EXPECT_EQ(2, Run("timecode 00:00:00:00:00").status);
    EXPECT_EQ(2, Run("timecode soon").status);
    EXPECT_EQ(2, Run("timecode nan").status);
    EXPECT_EQ(2, Run("timecode 0 --fps 0").status);
    EXPECT_EQ(2, Run("timecode 0 --fps 25/0").status);
    EXPECT_EQ(2, Run("timecode 0 --rate fast").status);
}

// What people mean stands beside what the link's functions make of it, and why on standard error.
TEST_F(TimecodeTool, WarnsWhereTheLinksOwnRulesDiffer) {
    const CResult frame = Run("timecode 29f --fps 29.97");
    EXPECT_EQ(0, frame.status);
    EXPECT_NE(frame.output.find("timecode  00:00:00:28  (people count 00:00:00:29)\n"),
              std::string::npos)
        << frame.output;
    EXPECT_NE(frame.errors.find("rules of their own"), std::string::npos) << frame.errors;

    const CResult before = Run("timecode -- -5");
    EXPECT_NE(before.output.find("(people count -00:00:00:01)"), std::string::npos)
        << before.output;
    EXPECT_NE(before.errors.find("no time code before zero"), std::string::npos) << before.errors;

    const CResult drop = Run("timecode 00:01:00:00 --drop");
    EXPECT_NE(drop.output.find("  (people count 2880000)\n"), std::string::npos) << drop.output;
    EXPECT_NE(drop.errors.find("there is none at 25\n"), std::string::npos) << drop.errors;

    const CResult missing = Run("timecode '00:01:00;01' --drop --fps 29.97");
    EXPECT_NE(missing.errors.find("no clock shows \"00:01:00;01\""), std::string::npos)
        << missing.errors;
    EXPECT_NE(Run("timecode 00:00:60:00").errors.find("no clock shows"), std::string::npos);
    EXPECT_NE(Run("timecode 00:00:00:25").errors.find("no clock shows"), std::string::npos);
}

TEST_F(TimecodeTool, SaysNothingWhereBothMeanTheSame) {
    for (const char* szPosition :
         {"0", "1920", "96000.5", "01:02:03:04", "23:59:59:24", "2159999f", "24:00:00:00"}) {
        const CResult result = Run(std::string("timecode ") + szPosition);
        EXPECT_EQ("", result.errors) << szPosition;
        EXPECT_EQ(std::string::npos, result.output.find("people")) << result.output;
    }
    EXPECT_EQ("", Run("timecode '00:10:00;00' --drop --fps 30000/1001").errors);
}

TEST_F(TimecodeTool, PrintsJson) {
    const CResult result = Run("timecode 29f --fps 29.97 --json");
    EXPECT_EQ("", result.errors);
    for (const char* szPart : {"\"frames\": 29,", "\"timecode\": \"00:00:00:28\"",
                               "\"timecode\": \"00:00:00:29\"", "\"warnings\": [\n"})
        EXPECT_NE(std::string::npos, result.output.find(szPart)) << szPart << result.output;
    EXPECT_NE(std::string::npos, Run("timecode 50f --json").output.find("\"warnings\": []"));
    EXPECT_NE(std::string::npos, Run("timecode soon --json").errors.find("\"code\":\"usage\""));
}

TEST_F(TimecodeTool, RefusesWhatNoSoundReaches) {
    for (const char* szPosition :
         {"1e308", "9223372036854775807f", "1f --rate 1e300", "1f --fps 1e-300"}) {
        const CResult result = Run(std::string("timecode ") + szPosition);
        EXPECT_EQ(2, result.status) << szPosition << result.output;
        EXPECT_NE(std::string::npos, result.errors.find("farther out")) << result.errors;
    }
}

}  // namespace
