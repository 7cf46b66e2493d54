// The messages of 64 KB that are known to be the slowest to parse. Compare the cost of each with hostile/well_formed:
// it should be at most 20 times as much. If the whole message is refused, the cost up to that point is counted.

#include "bench/Hostile.h"
#include "util/KxException.h"

#include <benchmark/benchmark.h>

namespace {

/** Lines as carriers send them. There is no body, because a body would cost nothing. */
std::string wellFormed() {
    return requestWith(
        filled("",
               "Via: SIP/2.0/UDP sbc1.east.example.net:5060;branch=z9hG4bK-524287-1---3e4aa0c9;rport=5060\r\n"
               "Record-Route: <sip:203.0.113.10;lr;ftag=9c44e1b0;did=a1f.2c7>\r\n"
               "X-Trunk: text of a header without a class\r\n"
               "Route: <sip:gw3.east.example.net:5060;lr>\r\n"
               "Contact: \"Lindqvist, Ida\" <sip:+12025550188@192.0.2.201:5062;transport=udp>;q=0.5\r\n"
               "Supported: 100rel, timer, replaces, precondition, histinfo, path, norefersub\r\n"
               "Allow: INVITE, ACK, CANCEL, BYE, PRACK, UPDATE\r\n",
               ""));
}

struct Case {
    const char* name;
    std::string_view first; ///< Begin of the lines that are added to a plain request.
    std::string_view piece; ///< Repeated as often as there is room.
    std::string_view last;  ///< End of the lines.
};

constexpr Case kCases[] = {
    // lines that the framework refuses
    {"line/no_colon", "", "x\r\n", ""},
    {"line/no_name", "", ":\r\n", ""},
    {"line/no_name_long", "", ":refused for want of a name, and of some length\r\n", ""},
    {"line/nothing_after_colon", "", "k:\r\n", ""},
    {"line/nothing_after_comma", "", "k:a,\r\n", ""},
    {"line/line_feeds_alone", "", "k:a\n", ""},
    {"line/carriage_returns_alone", "", "k:a\rb\rc\rd\re\r\n", ""},
    // lines that their classes refuse
    {"refused/via_without_transport", "", "v:x\r\n", ""},
    {"refused/via_of_unknown_transport", "", "v:a/b/c d\r\n", ""},
    {"refused/from_without_uri", "", "f:x\r\n", ""},
    {"refused/from_of_odd_name", "", "f:@\r\n", ""},
    {"refused/from_of_bad_url", "", "f:sip:\r\n", ""},
    {"refused/from_of_open_quote", "", "f:\"\r\n", ""},
    {"refused/to_without_uri", "", "t:<\r\n", ""},
    {"refused/contact_without_uri", "", "m:x\r\n", ""},
    {"refused/contact_of_empty_brackets", "", "m:<>\r\n", ""},
    {"refused/second_of_two_contacts", "", "m:sip:a,x\r\n", ""},
    {"refused/media_type_without_slash", "", "c:x\r\n", ""},
    {"refused/coding_missing", "", "e:>\r\n", ""},
    {"refused/route_without_brackets", "", "Route:x\r\n", ""},
    {"refused/record_route_without_brackets", "", "Record-Route:x\r\n", ""},
    {"refused/refer_to_without_uri", "", "Refer-To:x\r\n", ""},
    {"refused/referred_by_without_uri", "", "Referred-By:x\r\n", ""},
    {"refused/replaces_without_tags", "", "Replaces:x\r\n", ""},
    {"refused/event_missing", "", "Event:;\r\n", ""},
    {"refused/disposition_missing", "", "Content-Disposition:{\r\n", ""},
    {"refused/diversion_of_bad_url", "", "CC-Diversion:sip:\r\n", ""},
    {"refused/error_info_without_brackets", "", "Error-Info:x\r\n", ""},
    {"refused/session_expires_without_number", "", "x:y\r\n", ""},
    {"refused/cseq_without_method", "", "CSeq:1\r\n", ""},
    {"refused/accept_without_slash", "", "Accept:x\r\n", ""},
    {"refused/warning_without_code", "", "Warning:x\r\n", ""},
    {"refused/retry_after_without_number", "", "Retry-After:x\r\n", ""},
    {"refused/mime_version_without_number", "", "MIME-Version:x\r\n", ""},
    {"refused/timestamp_without_number", "", "Timestamp:x\r\n", ""},
    {"refused/rack_without_method", "", "RAck:1\r\n", ""},
    {"refused/response_key_missing", "", "Response-Key:;\r\n", ""},
    {"refused/credentials_of_other_scheme", "", "Authorization:x\r\n", ""},
    {"refused/credentials_without_value", "", "Authorization:Digest a\r\n", ""},
    {"refused/challenge_of_other_scheme", "", "WWW-Authenticate:x\r\n", ""},
    // many short lines
    {"short/known_headers", "", "k:a\r\n", ""},
    {"short/unknown_headers", "", "q:1\r\n", ""},
    {"short/unknown_headers_that_differ", "", "q#:1\r\n", ""},
    {"short/headers_that_stand_once", "", "x:1\r\n", ""},
    {"short/contacts", "", "m:sip:a\r\n", ""},
    {"short/vias", "", "v:a/b/UDP c\r\n", ""},
    {"short/folded_lines", "q: 1", "\r\n 1", "\r\n"},
    {"short/folded_values", "k: a", ",\r\n a", "\r\n"},
    {"short/folded_headers", "", "k:\r\n a\r\n", ""},
    // long chains
    {"chain/tags", "k: a", ",a", "\r\n"},
    {"chain/empty_tags", "k: ", ",", "a\r\n"},
    {"chain/tokens_with_parameter", "Session: a", ",a;b", "\r\n"},
    {"chain/routes", "Route: <sip:a>", ",<sip:a>", "\r\n"},
    {"chain/contacts_without_brackets", "m: sip:a", ",sip:a", "\r\n"},
    {"chain/contacts_with_late_at", "m: sip:a", ",sip:a", ",sip:a@b\r\n"},
    {"chain/contacts_in_open_quote", "m: sip:a", ",sip:a\"", "@\r\n"},
    {"chain/vias", "Via: a/b/UDP c", ",a/b/UDP c", "\r\n"},
    {"chain/warnings", "Warning: 1 a \"\"", ",1 a \"\"", "\r\n"},
    {"chain/unknown", "q: a", ",a", "\r\n"},
    // long parameter lists
    {"parameters/that_differ", "m: <sip:a>", ";#", "\r\n"},
    {"parameters/of_one_name", "m: <sip:a>", ";p", "\r\n"},
    {"parameters/empty", "m: <sip:a>", ";", "\r\n"},
    {"parameters/equals_signs", "m: <sip:a>;a", "=", "\r\n"},
    {"parameters/quotes", "m: <sip:a>;a=", "\"\"", "\r\n"},
    {"parameters/escapes", "m: <sip:a>;a=\"", "\\\"", "\"\r\n"},
    {"parameters/of_url", "m: <sip:a", ";#", ">\r\n"},
    {"parameters/of_via", "v: a/b/UDP c", ";#=", "\r\n"},
    {"parameters/of_many_vias", "", "v:a/b/UDP c;ttl=1;d\r\n", ""},
    {"parameters/removed_from_url_of_from", "", "f:<sip:a;transport=a;maddr=b;ttl=c>\r\n", ""},
    // URLs
    {"url/at_signs", "m: <sip:a", "@", ">\r\n"},
    {"url/at_signs_in_quotes", "m: <sip:a\"", "@", "\">\r\n"},
    {"url/quotes", "m: <sip:", "\"\"", "@a>\r\n"},
    {"url/semicolons_in_user", "m: <sip:", ";a", "@b>\r\n"},
    {"url/colons", "m: <sip:a", ":", ">\r\n"},
    {"url/blanks", "m: <sip:", "a ", ">\r\n"},
    {"url/brackets", "m: sip:a", "<", ">\r\n"},
    {"url/headers", "m: <sip:a?a=b", ";#=c", ">\r\n"},
    {"url/headers_of_one_name", "m: <sip:a?a=b", ";a=b", ">\r\n"},
    {"url/escapes_in_header", "m: <sip:a?a=", "%41", ">\r\n"},
    {"url/short_with_header", "", "m:<sip:a?b=c>\r\n", ""},
    {"url/tel_parameters", "m: <tel:1", ";#", ">\r\n"},
    // display names, comments, free text
    {"text/brackets", "m: ", "<", "\r\n"},
    {"text/display_name_too_long", "m: ", "a", "<sip:a>\r\n"},
    {"text/quoted_names", "", "m:\"\\\"\"<sip:a>\r\n", ""},
    {"text/via_comments", "v: a/b/UDP c", "(a)", "\r\n"},
    {"text/via_open_comments", "", "v:a/b/UDP c(\r\n", ""},
    {"text/via_ports", "v: a/b/UDP c", ":1", "\r\n"},
    {"text/warning_escapes", "Warning: 1 a \"", "\\a", "\"\r\n"},
    {"text/accept_parameters", "Accept: a/b", ";#", "\r\n"},
    {"text/blanks", "s:", " ", "a\r\n"},
    {"text/blank_lines_of_a_fold", "s: a", "\r\n ", "\r\n"},
};

void parseHostile(benchmark::State& state, const std::string& bytes) {
    for (auto _ : state) {
        try {
            benchmark::DoNotOptimize(parseMessage(bytes));
        } catch (const KxHandle<KxException>&) {
            benchmark::DoNotOptimize(bytes.data()); // the whole message is refused
        }
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes.size()));
}

const bool s_registered = [] {
    const auto add = [](const std::string& name, const std::string& bytes) {
        benchmark::RegisterBenchmark(("hostile/" + name).c_str(), parseHostile, bytes);
    };
    add("well_formed", wellFormed());
    for (const Case& hostile : kCases) {
        add(hostile.name, requestWith(filled(hostile.first, hostile.piece, hostile.last)));
    }
    add("start/url_headers", filled("OPTIONS sip:a?a=b", ";#=c", " SIP/2.0\r\n\r\n"));
    add("start/url_parameters", filled("OPTIONS sip:a", ";#", " SIP/2.0\r\n\r\n"));
    add("start/blanks", filled("OPTIONS", " ", " SIP/2.0\r\n\r\n"));
    add("start/line_ends", filled("OPTIONS sip:a SIP/2.0\r\n", "\r", ""));
    return true;
}();

} // namespace
