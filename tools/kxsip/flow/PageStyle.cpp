#include "tools/kxsip/flow/PageStyle.h"

// A ladder may be wider than the window. Then the whole page is scrolled, and what is "sticky" stays in view: the
// number and time of a message and its text at the left, the names of the columns at the top. The lifelines are a background
// of the ladder, so that their number does not matter.
const char* const kPageStyle = R"(
:root{color-scheme:light dark;--gutter:150px;--edge:28px;--page:#fff;--text:#1f2933;--faint:#5c6874;--line:#e4e8ec;
--life:#ced5dc;--box:#f4f6f8;--hover:#edf2fa;--req:#1d5fbf;--pro:#a86400;--ok:#18794e;--bad:#c4291c}
.clock{--gutter:190px}
body{margin:0;padding:20px 0 40vh;background:var(--page);color:var(--text);width:max-content;min-width:100%;
font:13px/1.5 Inter,"Segoe UI","Helvetica Neue",Arial,"DejaVu Sans",sans-serif}
svg{display:block;flex:none;overflow:visible}
header,nav,h2,p{position:sticky;left:var(--edge);width:fit-content;max-width:calc(100vw - 2*var(--edge) - 16px);
margin:0 var(--edge);overflow-wrap:anywhere}
header{display:flex;flex-wrap:wrap;gap:2px 18px;margin-bottom:20px;font-size:12px}
header span{display:flex;align-items:center;gap:7px}
nav{margin-bottom:28px}
table{border-collapse:collapse}
td,th{padding:3px 18px 3px 0;text-align:left;vertical-align:top;border-bottom:1px solid var(--line)}
th{font-weight:600;color:var(--faint);overflow-wrap:normal}
.date{white-space:nowrap}
.count{text-align:right;white-space:nowrap;font-variant-numeric:tabular-nums}
a{color:var(--req);text-decoration:none}a:hover{text-decoration:underline}
section{margin-bottom:44px}
h2{font-size:17px;font-weight:600;line-height:1.4}
h2 span{margin-left:8px}
p{color:var(--faint);font-size:12px;margin-bottom:10px}
.t-req{color:var(--req)}.t-pro{color:var(--pro)}.t-ok{color:var(--ok)}.t-bad{color:var(--bad)}
.ladder{position:relative;z-index:0;width:calc(var(--gutter) + var(--wide) + var(--edge));padding-bottom:14px}
.lines,.foot{position:absolute;z-index:-1;print-color-adjust:exact;-webkit-print-color-adjust:exact}
.lines{top:0;bottom:7px;left:calc(var(--gutter) + var(--first) - 1px);width:calc(var(--reach) + 2px);
background:linear-gradient(90deg,var(--life) 2px,transparent 2px) 0 0/var(--space) 100% repeat-x}
.foot{bottom:6px;height:2px;left:calc(var(--gutter) + var(--first) - 8px);width:calc(var(--reach) + 16px);
background:linear-gradient(90deg,var(--life) 16px,transparent 16px) 0 0/var(--space) 100% repeat-x}
.names{position:sticky;top:0;z-index:3;display:flex;gap:var(--gap);padding:8px 0 0;background:var(--page)}
.names b{box-sizing:border-box;flex:none;width:var(--boxes);height:46px;display:flex;flex-direction:column;
justify-content:center;align-items:center;font-weight:600;line-height:1.35;white-space:nowrap;
border:1px solid var(--life);border-radius:6px;background:var(--box)}
.names small{font-size:12px;font-weight:400;color:var(--faint)}
.when{position:sticky;left:0;z-index:2;box-sizing:border-box;flex:none;width:var(--gutter);padding-right:22px;
display:flex;justify-content:flex-end;align-items:center;gap:18px;background:var(--page);color:var(--faint);
font:12px/1.25 "SF Mono",Consolas,"DejaVu Sans Mono",monospace;white-space:pre}
.names .when{margin-right:calc(0px - var(--gap));align-self:stretch}
summary{display:flex;height:36px;cursor:pointer;scroll-margin-top:60px}
summary::-webkit-details-marker{display:none}
summary:hover{background:rgba(29,95,191,.08)}
summary:hover .when,summary:focus-visible .when{background:var(--hover)}
summary:focus-visible{outline:2px solid var(--req);outline-offset:-2px}
.pause{display:flex;height:26px}
.pause::after{content:"";flex:auto;background:repeating-linear-gradient(var(--page) 0 5px,transparent 5px 7px)}
pre{position:sticky;left:var(--gutter);width:fit-content;min-width:min(40ch,60vw);box-sizing:border-box;
max-width:min(116ch,calc(100vw - var(--gutter) - 44px));margin:2px 0 10px var(--gutter);padding:10px 14px;
background:var(--box);border-left:3px solid;border-radius:0 4px 4px 0;
font:12px/1.5 "SF Mono",Consolas,"DejaVu Sans Mono",monospace;white-space:pre-wrap;overflow-wrap:anywhere}
pre::before{content:"";position:absolute;z-index:-1;top:-2px;bottom:-10px;left:calc(-3px - var(--gutter));
width:var(--gutter);background:var(--page)}
pre b{font-weight:600}pre i{font-style:normal;color:var(--faint)}pre span{color:var(--text)}
@media (max-width:700px){
:root,.clock{--gutter:92px;--edge:12px}
.when{flex-direction:column;justify-content:center;align-items:flex-end;gap:0;padding-right:12px;font-size:11px}
pre{left:12px;margin-left:12px;max-width:calc(100vw - 36px)}
h2{font-size:15px}
tr:first-child{display:none}
tr+tr{display:block;padding:6px 0;border-bottom:1px solid var(--line)}
td{display:inline-block;padding:0 12px 0 0;border:0}
td.call{display:block}
.messages::after{content:" messages"}
.seconds::after{content:" s"}
}
@media (prefers-color-scheme:dark){
:root{--page:#15191e;--text:#e4e8ec;--faint:#98a4b0;--line:#2b333b;--life:#3b454f;--box:#21272e;--hover:#1d2531;
--req:#79b0ff;--pro:#e6b04d;--ok:#57c78d;--bad:#ff8177}
summary:hover{background:rgba(121,176,255,.09)}
}
)";
