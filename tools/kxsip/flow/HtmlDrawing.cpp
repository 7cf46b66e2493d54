#include "tools/kxsip/flow/Drawing.h"
#include "tools/kxsip/flow/LadderShape.h"
#include "tools/kxsip/flow/PageStyle.h"
#include "tools/kxsip/flow/Utf8.h"

#include <algorithm>

namespace {

constexpr const char* kArrow = " \u2192 ";

void writeHeader(std::ostream& out, std::string_view line) {
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos || line.front() == ' ' || line.front() == '\t') {
        out << Utf8::escaped(line);
    } else {
        out << "<i>" << Utf8::escaped(line.substr(0, colon + 1)) << "</i>" << Utf8::escaped(line.substr(colon + 1));
    }
}

/** Writes the start line in bold, header names faint and the body unchanged, without line ends at the end. */
void writeMessage(std::ostream& out, std::string_view text) {
    text = text.substr(0, text.find_last_not_of("\r\n") + 1);
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

void writeStep(std::ostream& out, const LadderShape& shape, const Call& call, const Step& step, TimeText time) {
    const std::string className = LadderShape::sClassOf(step);
    const LadderShape::Span span = shape.spanOf(step);
    out << "<details class=\"step " << className << (step.repeats ? " again" : "")
        << "\"><summary><span class=\"when\"><span>" << step.index << "</span><span>" << time.of(step, call)
        << "</span></span><svg style=\"margin-left:" << span.left << "px\" width=\"" << span.width << "\" height=\""
        << LadderShape::kStepHeight << "\" viewBox=\"" << span.left << " 0 " << span.width << ' '
        << LadderShape::kStepHeight << "\">";
    shape.drawArrow(out, step);
    out << "</svg></summary><pre class=\"t-" << className << "\">";
    if (step.isFlawed()) {
        out << "<b class=\"t-bad\">" << Utf8::escaped(step.verdict.text()) << "</b>\n\n";
    }
    writeMessage(out, step.text);
    out << "</pre></details>\n";
}

void writeNames(std::ostream& out, const LadderShape& shape, const Call& call) {
    out << "<div class=\"names\"><span class=\"when\"></span>";
    for (std::size_t i = 0; i < call.columns.size(); ++i) {
        const std::string ports = call.columns[i].portText();
        out << "<b title=\"" << Utf8::escaped(call.columns[i].name) << "\">" << Utf8::escaped(shape.nameOf(i))
            << (ports.empty() ? "" : "<small>" + ports + "</small>") << "</b>";
    }
    out << "</div>\n";
}

void writeCall(std::ostream& out, const Call& call, std::size_t number, TimeText time) {
    const LadderShape shape(call);
    out << "<section id=\"call-" << number << "\">\n<h2>" << Utf8::escaped(call.title(kArrow)) << " <span class=\"t-"
        << LadderShape::sClassOf(call) << "\">" << Utf8::escaped(call.result()) << "</span></h2>\n<p>Call-ID "
        << Utf8::escaped(call.id) << " \u00B7 " << time.date(call.begin()) << " \u00B7 " << Utf8::escaped(call.extent())
        << "</p>\n<div class=\"ladder\" style=\"--wide:" << shape.width() << "px;--boxes:" << shape.boxWidth()
        << "px;--space:" << shape.spacing() << "px;--gap:" << shape.spacing() - shape.boxWidth()
        << "px;--first:" << shape.at(0) << "px;--reach:" << shape.at(call.columns.size() - 1) - shape.at(0)
        << "px\">\n<div class=\"lines\"></div><div class=\"foot\"></div>\n";
    writeNames(out, shape, call);
    for (std::size_t i = 0; i < call.steps.size(); ++i) {
        if (const auto pause = shape.pauseBefore(i); pause.count() > 0) {
            out << "<div class=\"pause\"><span class=\"when\">+" << secondsText(pause) << "</span></div>\n";
        }
        writeStep(out, shape, call, call.steps[i], time);
    }
    out << "</div>\n</section>\n";
}

void writeList(std::ostream& out, const std::vector<Call>& calls, TimeText time) {
    out << "<nav><table><tr><th>Began</th><th>Call</th><th>Result</th><th class=\"count\">Messages</th>"
           "<th class=\"count\">Seconds</th></tr>\n";
    for (std::size_t i = 0; i < calls.size(); ++i) {
        const Call& call = calls[i];
        out << "<tr><td class=\"date\">" << time.date(call.begin()) << "</td><td class=\"call\"><a href=\"#call-" << i
            << "\">" << Utf8::escaped(call.title(kArrow)) << "</a></td><td class=\"t-" << LadderShape::sClassOf(call)
            << "\">" << Utf8::escaped(call.result()) << "</td><td class=\"count messages\">" << call.steps.size()
            << "</td><td class=\"count seconds\">" << secondsText(call.duration()) << "</td></tr>\n";
    }
    out << "</table></nav>\n";
}

void writeLegend(std::ostream& out) {
    out << "<header>";
    for (const LadderShape::Key& key : LadderShape::sLegend) {
        out << "<span><svg width=\"" << LadderShape::kKeyWidth << "\" height=\"" << LadderShape::kKeyHeight << "\">";
        LadderShape::sDrawKey(out, key);
        out << "</svg>" << key.text << "</span>";
    }
    out << "</header>\n";
}

} // namespace

void drawHtml(std::ostream& out, const std::vector<Call>& calls, TimeText time) {
    out << "<!DOCTYPE html>\n<html xmlns=\"http://www.w3.org/1999/xhtml\" lang=\"en\">\n<head>\n"
           "<meta charset=\"utf-8\"/>\n<meta name=\"viewport\" content=\"width=device-width\"/>\n"
           "<title>SIP ladder</title>\n<style>"
        << LadderShape::sStyle << kPageStyle << "</style>\n</head>\n<body"
        << (time.isElapsed() ? "" : " class=\"clock\"") << ">\n";
    writeLegend(out);
    if (calls.size() > 1) {
        writeList(out, calls, time);
    }
    for (std::size_t i = 0; i < calls.size(); ++i) {
        writeCall(out, calls[i], i, time);
    }
    out << "</body>\n</html>\n";
}

std::size_t drawingSize(const std::vector<Call>& calls) {
    constexpr std::size_t kForStep = 400;
    constexpr std::size_t kForColumn = 150;
    constexpr std::size_t kForCall = 1500;
    std::size_t size = 0;
    for (const Call& call : calls) {
        size += kForCall + call.columns.size() * kForColumn;
        for (const Step& step : call.steps) {
            size += kForStep + step.text.size() * 5 / 4;
        }
    }
    return size;
}
