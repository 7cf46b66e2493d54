#include "tests/sipobject/support/HeaderSupport.h"

#include <deque>

/** Values, and the headers that have them: name, identifier (0 if callers do not rely on it), and compact
    name or "-". */
constexpr std::pair<const char*, const char*> kKinds[] = {
    {"a/b", "Accept 0 -  Content-Type 21 c"},
    {"a", "Accept-Encoding 0 -  Accept-Language 0 -  Allow 11 -  Allow-Events 12 -  Call-ID 5 i  "
          "Content-Disposition 0 -  Content-Encoding 20 e  Event 0 -  In-Reply-To 0 -  Priority 0 -  "
          "Proxy-Require 37 -  Require 44 -  Session 0 -  Supported 53 k  Unsupported 56 -"},
    {"<sip:a>", "Alert-Info 0 -  CC-Diversion 0 -  Contact 18 m  Error-Info 0 -  From 2 f  Record-Route 0 -  "
                "Referred-By 0 -  Route 0 -  To 3 t"},
    {"nextnonce=\"a\"", "Authentication-Info 14 -"},
    {"Digest username=\"a\",realm=\"b\",nonce=\"c\",response=\"d\",uri=\"sip:a\"",
     "Authorization 15 -  Proxy-Authorization 36 -"},
    {"1 A", "CSeq 4 -"},
    {"1", "Content-Length 6 l  Expires 26 -  Max-Forwards 29 -  Min-Expires 31 -  Min-SE 32 -  "
          "RSeq 39 -  Retry-After 0 -  Session-Expires 49 x  Timestamp 0 -"},
    {"Thu, 01 Dec 1994 16:00:00 GMT", "Date 0 -"},
    {"1.0", "MIME-Version 0 -"},
    {"a, b", "Organization 0 -  Server 0 -  Subject 51 s  User-Agent 0 -"},
    {"Digest realm=\"a\"", "Proxy-Authenticate 35 -  WWW-Authenticate 58 -"},
    {"1 1 A", "RAck 38 -"},
    {"sip:a", "Refer-To 0 -"},
    {"a;to-tag=1;from-tag=2", "Replaces 43 -"},
    {"a b=c,d", "Response-Key 0 -"},
    {"SIP/2.0/UDP a", "Via 1 v"},
    {"399 a \"b\"", "Warning 0 -"},
};

/** Letters that are no compact name of a known header. */
constexpr std::string_view kFreeLetters = "abdghjnopqruwyz";

template <class H>
static KxSipHeader* make() {
    return new H("");
}

/** Every name is that of its class, and a header of it survives copying and writing. */
TEST(HeaderRegistryTest, EveryNameInEveryLetterCase) {
    std::set<HeaderID> ids;
    for (const auto& [value, kinds] : kKinds) {
        std::istringstream in(kinds);
        unsigned id = 0;
        std::string compact;
        for (std::string name; in >> name >> id >> compact;) {
            compact = compact == "-" ? name : compact;
            std::string theClass = "KxSip" + name + "Header";
            std::erase(theClass, '-');
            for (const std::string& known : {name, compact}) {
                const std::string upper(KxString(known).upper().view());
                const std::string lower(KxString(known).lower().view());
                for (const std::string& spelled : {known, lower[0] + upper.substr(1), lower, upper}) {
                    const std::string line = spelled + ": " + value;
                    const KxHandle<KxSipHeader> header = readHeader(line);
                    EXPECT_TRUE(KxAscii::equalsNoCase(className(*header), theClass)) << spelled;
                    EXPECT_TRUE(id == 0 || header->getHeaderID() == id) << spelled;
                    EXPECT_EQ(joined(header->getExpandedToken(), header->getCompactToken()), joined(name, compact));
                    EXPECT_EQ(linesOf(*header), line);
                    ids.insert(header->getHeaderID());
                }
            }
        }
    }
    EXPECT_EQ(ids.size(), 53U);
    EXPECT_LT(*ids.rbegin(), KxHeaderIDs::kCount);
}

/** Fails with the step of docs/adding-a-header.md that is missing for a registered name. */
TEST(HeaderRegistryTest, NoRegisteredNameIsLeftOut) {
    std::string rows = " ";
    for (const auto& [value, kinds] : kKinds) {
        rows.append(kinds).append(" ");
    }
    const auto textOf = [](const char* path) {
        return "\n" + fileText(std::filesystem::path(KX_SOURCE_DIR) / path) + "\n";
    };
    const std::string golden = textOf("tests/messages/every_kind.sip");
    const std::string words = textOf("fuzz/header.dict");
    const std::string fuzzed = textOf("fuzz/fuzz_header.cpp");
    std::string tested;
    for (const char* const folder : {"tests/sipobject/headers", "tests/sipobject/auth"}) {
        for (const std::filesystem::path& file : filesOf(folder, ".cpp")) {
            tested += file.filename() == "HeaderRegistryTest.cpp" ? "" : fileText(file);
        }
    }
    std::size_t known = 0;
    for (const std::string_view registered : KxSipHeader::sNames()) {
        const std::string name(registered);
        if (name.starts_with("X-Kx-")) { // another test's
            continue;
        }
        ++known;
        EXPECT_TRUE(name.size() == 1 || tested.find('"' + name + ": ") != std::string::npos) << name << ": step 4.1";
        EXPECT_NE(rows.find(" " + name + " "), std::string::npos) << name << ": step 4.2";
        EXPECT_TRUE(name.size() == 1 || golden.find("\n" + name + ": ") != std::string::npos) << name << ": step 4.3";
        EXPECT_NE(words.find("\n\"" + name + ":\"\n"), std::string::npos) << name << ": step 4.4, the dictionary";
        EXPECT_TRUE(fuzzed.find(" " + name + " ") != std::string::npos ||
                    fuzzed.find("\"" + name + " ") != std::string::npos)
            << name << ": step 4.4, the list";
    }
    EXPECT_GE(known, 64U);
}

TEST(HeaderRegistryTest, OtherNamesAreKeptWithTheirRawText) {
    std::vector<std::string> names = {
        "Call-Info", "Vi",    "Viaa",         "Content-Typ",    "Content-Lengthy",    "xx",
        "-",         "Via;x", "Contend-Type", "Content-Lxngth", "Proxy-Auxhorization"};
    for (const char letter : kFreeLetters) {
        names.emplace_back(1, letter);
    }
    for (const std::string& name : names) {
        const KxHandle<KxSipUnknownHeader> header = readAs<KxSipUnknownHeader>(name + ": <a>;b=\"c\", d");
        EXPECT_EQ(header->getHeaderID(), KxHeaderIDs::kUnknown);
        EXPECT_EQ(joined(header->getExpandedToken(), header->getCompactToken(), header->getValue()),
                  joined(name, name, "<a>;b=\"c\", d"));
    }
    expectRows<KxSipUnknownHeader, &KxSipUnknownHeader::getValue>({
        {"X-Foo: \v\t a, b,\t ", "a, b,\t ", "X-Foo: a, b,\t "},
        {"X-Foo:\xff\x01:", "\xff\x01:", "X-Foo: \xff\x01:"},
        {"X-Foo: " + std::string(99999, ','), std::string(99999, ','), "X-Foo: " + std::string(99999, ',')},
    });
    EXPECT_EQ(linesOf(*KxMake<KxSipUnknownHeader>("N", static_cast<const char*>(nullptr))), "N: ");
}

TEST(HeaderRegistryTest, TheFirstRegistrationStands) {
    ClassLog capture("tandril.kx.KxSipHeader");
    KxSipHeader::sAddConstructor("X-Kx-Test", &make<KxSipRequireHeader>);
    EXPECT_EQ(capture.texts(), std::vector<std::string>{"pToken = \"X-Kx-Test\""});
    KxSipHeader::sAddConstructor("x-KX-test", &make<KxSipAllowHeader>);
    KxSipHeader::sAddConstructor("ALLOW", &make<KxSipRequireHeader>);
    EXPECT_EQ(linesOf(*readAs<KxSipRequireHeader>("X-kx-tesT: a;b,c")), "X-kx-tesT: a;b & Require: c");
    EXPECT_EQ(linesOf(*readAs<KxSipAllowHeader>("Allow: a;b")), "Allow: a");
}

/** Names of 48 characters and more are unknown ones, even if they are registered. */
TEST(HeaderRegistryTest, LongNamesAreNotLookedUp) {
    for (const std::size_t length : {47U, 48U}) {
        static std::deque<std::string> names; // which the registry keeps
        KxSipHeader::sAddConstructor(names.emplace_back(length, 'n').c_str(), &make<KxSipRequireHeader>);
        const std::string line = names.back() + ": a";
        const KxHandle<KxSipHeader> header = readHeader(line);
        EXPECT_EQ(className(*header), length < 48 ? "KxSipRequireHeader" : "KxSipUnknownHeader");
        EXPECT_EQ(linesOf(*header), line);
    }
}

template <class... H>
static std::map<std::size_t, std::size_t> sizesOf(Classes<H...>) {
    std::map<std::size_t, std::size_t> sizes;
    (++sizes[sizeof(H)], ...);
    return sizes;
}

/** A message has twenty and more of them, so that each byte counts: size, and how many classes have it. */
TEST(HeaderRegistryTest, SizesOfTheClasses) {
    const auto sizes = sizesOf(EveryHeader());
    EXPECT_EQ(sizes, (sizeof(void*) == 8
                          ? std::map<std::size_t, std::size_t>{{32, 1}, {40, 24}, {48, 23}, {56, 5}, {64, 4}, {88, 1}}
                          : sizes));
}
