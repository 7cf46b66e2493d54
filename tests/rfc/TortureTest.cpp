#include "tests/sipobject/support/MessageSupport.h"

/** The messages of RFC 4475 and RFC 5118, each with its section and what it is: valid, faulty, or well-formed but wrong
    for another reason (-). */
TEST(TortureTest, MessagesAreWhatTheirSectionsSay) {
    const std::string folder = KX_SOURCE_DIR "/tests/messages/torture/";
    std::istringstream rows(fileText(folder + "sections.txt"));
    std::size_t files = 0;
    for (std::string rfc, section, file, verdict; rows >> rfc >> section >> file >> verdict; ++files) {
        SCOPED_TRACE(rfc.append(" ").append(section).append(" ").append(file));
        const std::string text = fileText(folder + file + ".sip");
        const std::string dump = outcomeOf([&text] { return dumpOf(*readMessage(text)); });
        const bool isValid = dump.find("\nstatus 0\n") != std::string::npos;
        EXPECT_TRUE(verdict == "-" || isValid == (verdict == "valid")) << dump;
        if (verdict == "valid" && isValid) {
            EXPECT_EQ(dumpOf(*readMessage(written(*readMessage(text)))), dump);
        }
    }
    EXPECT_EQ(files, filesOf("tests/messages/torture", ".sip").size());
}
