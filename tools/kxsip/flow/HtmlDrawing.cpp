#include "tools/kxsip/flow/Drawing.h"
#include "tools/kxsip/flow/LadderShape.h"
#include "tools/kxsip/flow/Utf8.h"

#include <algorithm>
#include <sstream>

namespace {

constexpr const char* kPageStyle = R"(
:root{color-scheme:light dark}
body{margin:0;padding:24px 8px;background:#fff;color:#1f2933;width:max-content;min-width:calc(100vw - 16px);
box-sizing:border-box;font:13px/1.5 Inter,"Segoe UI","Helvetica Neue",Arial,"DejaVu Sans",sans-serif}
svg{display:block}
header,table,h2,p{margin:0 28px}
header{margin-bottom:20px}
table{border-collapse:collapse;margin-bottom:28px}
td,th{padding:3px 18px 3px 0;text-align:left;border-bottom:1px solid #e4e8ec}
th{font-weight:600;color:#66727f}
.count{text-align:right}
a{color:#1d5fbf;text-decoration:none}a:hover{text-decoration:underline}
section{margin-bottom:44px}
h2{font-size:17px;font-weight:600;line-height:1.4}
h2 span{margin-left:8px}
p{color:#66727f;font-size:12px;margin-bottom:12px}
.names{position:sticky;top:0;background:#fff;padding-top:8px}
summary{display:block;cursor:pointer}
summary::-webkit-details-marker{display:none}
summary:focus-visible{outline:2px solid #1d5fbf;outline-offset:-2px}
pre{margin:2px 28px 10px 162px;padding:10px 14px;background:#f4f6f8;border-left:3px solid #c3ccd5;border-radius:0 4px 4px 0;
font:12px/1.5 "SF Mono",Consolas,"DejaVu Sans Mono",monospace;white-space:pre-wrap;overflow-wrap:anywhere;max-width:110ch}
pre b{font-weight:600}pre i{font-style:normal;color:#66727f}
.t-req{color:#1d5fbf}.t-pro{color:#a86400}.t-ok{color:#18794e}.t-bad{color:#c4291c}
pre.t-req,pre.t-pro,pre.t-ok,pre.t-bad{border-color:currentColor}
pre.t-req,pre.t-pro,pre.t-ok,pre.t-bad{--ink:#1f2933}
pre span{color:var(--ink)}
@media (prefers-color-scheme:dark){
body,.names{background:#15191e;color:#e4e8ec}
td,th{border-color:#2b333b}
th,p,pre i{color:#98a4b0}
a{color:#79b0ff}
pre{background:#21272e}
pre.t-req,pre.t-pro,pre.t-ok,pre.t-bad{--ink:#e4e8ec}
.t-req{color:#79b0ff}.t-pro{color:#e6b04d}.t-ok{color:#57c78d}.t-bad{color:#ff8177}
}
)";

template <class Draw>
void drawPicture(std::ostream& out, int width, int height, const Draw& draw) {
    out << "<svg width=\"" << width << "\" height=\"" << height << "\">";
    draw();
    out << "</svg>";
}

void writeHeader(std::ostream& out, std::string_view line) {
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos || line.front() == ' ' || line.front() == '\t') {
        out << Utf8::escaped(line);
    } else {
        out << "<i>" << Utf8::escaped(line.substr(0, colon + 1)) << "</i>" << Utf8::escaped(line.substr(colon + 1));
    }
}

/** Writes the start line in bold, header names faint and the body unchanged. */
void writeMessage(std::ostream& out, std::string_view text) {
    const auto nextLine = [&text] {
        const std::string_view line = text.substr(0, std::min(text.find('\n'), text.size() - 1) + 1);
        text.remove_prefix(line.size());
        return line;
    };
    out << "<b>" << Utf8::escaped(nextLine()) << "</b><span>";
    while (!text.empty() && text.front() != '\r' && text.front() != '\n') {
        writeHeader(out, nextLine());
    }
    out << Utf8::escaped(text) << "</span>";
}

void writeStep(std::ostream& out, const LadderShape& shape, const Step& step) {
    const std::string className = LadderShape::sClassOf(step);
    out << "<details class=\"step " << className << (step.repeats ? " again" : "") << "\"><summary>";
    drawPicture(out, shape.width(), LadderShape::kStepHeight, [&] { shape.drawStep(out, step); });
    out << "</summary><pre class=\"t-" << className << "\">";
    if (!step.error.empty()) {
        out << "<b>refused: " << Utf8::escaped(step.error) << "</b>\n\n";
    }
    writeMessage(out, step.text);
    out << "</pre></details>\n";
}

void writeCall(std::ostream& out, const Call& call, std::size_t number) {
    const LadderShape shape(call);
    out << "<section id=\"call-" << number << "\">\n<h2>" << Utf8::escaped(call.title(" \u2192 "))
        << " <span class=\"t-" << LadderShape::sClassOf(call) << "\">" << Utf8::escaped(call.result())
        << "</span></h2>\n<p>Call-ID " << Utf8::escaped(call.id) << " &middot; " << dateText(call.begin())
        << " &middot; " << call.steps.size() << " messages in " << secondsText(call.duration())
        << " s</p>\n<div class=\"names\">";
    drawPicture(out, shape.width(), LadderShape::kNamesHeight, [&] { shape.drawNames(out); });
    out << "</div>\n";
    for (std::size_t i = 0; i < call.steps.size(); ++i) {
        if (const auto pause = shape.pauseBefore(i); pause.count() > 0) {
            drawPicture(out, shape.width(), LadderShape::kPauseHeight, [&] { shape.drawPause(out, pause); });
        }
        writeStep(out, shape, call.steps[i]);
    }
    drawPicture(out, shape.width(), LadderShape::kFootHeight, [&] { shape.drawFoot(out); });
    out << "</section>\n";
}

void writeList(std::ostream& out, const std::vector<Call>& calls) {
    out << "<table><tr><th>Began</th><th>Call</th><th>Result</th><th class=\"count\">Messages</th>"
           "<th class=\"count\">Seconds</th></tr>\n";
    for (std::size_t i = 0; i < calls.size(); ++i) {
        const Call& call = calls[i];
        out << "<tr><td>" << dateText(call.begin()) << "</td><td><a href=\"#call-" << i << "\">"
            << Utf8::escaped(call.title(" \u2192 ")) << "</a></td><td class=\"t-" << LadderShape::sClassOf(call)
            << "\">" << Utf8::escaped(call.result()) << "</td><td class=\"count\">" << call.steps.size()
            << "</td><td class=\"count\">" << secondsText(call.duration()) << "</td></tr>\n";
    }
    out << "</table>\n";
}

} // namespace

std::string htmlDrawing(const std::vector<Call>& calls) {
    std::ostringstream out;
    out << "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
           "<meta name=\"viewport\" content=\"width=device-width\">\n<title>SIP ladder</title>\n<style>"
        << LadderShape::sStyle << kPageStyle << "</style>\n</head>\n<body>\n<header>";
    drawPicture(out, LadderShape::kLegendWidth, LadderShape::kLegendHeight, [&] { LadderShape::sDrawLegend(out); });
    out << "</header>\n";
    if (calls.size() > 1) {
        writeList(out, calls);
    }
    for (std::size_t i = 0; i < calls.size(); ++i) {
        writeCall(out, calls[i], i);
    }
    out << "</body>\n</html>\n";
    return out.str();
}
