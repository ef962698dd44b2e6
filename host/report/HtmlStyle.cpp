#include <string>

#include "host/report/HtmlReport.h"
#include "host/report/plot/PlotColours.h"

namespace tarn {

namespace {

/// What stands for itself. Colours are variables, of which the dark page has others.
constexpr const char* kRules = R"(
.tarn{--text:#1b1b1b;--quiet:#595959;--paper:#fff;--shade:#f4f5f7;--line:#cfd3d8;--link:#0a5a9c;--bad:#a3230f;
color-scheme:light;box-sizing:border-box;max-width:70rem;margin:0 auto;padding:1.5rem 1rem 3rem;color:var(--text);
background:var(--paper);font:1rem/1.5 system-ui,-apple-system,"Segoe UI",Roboto,"Helvetica Neue",Arial,sans-serif}
.tarn *{box-sizing:border-box}
.tarn h1,.tarn h2,.tarn h3,.tarn h4{line-height:1.25;margin:2rem 0 .5rem;max-width:44rem;overflow-wrap:anywhere;
text-wrap:balance}
.tarn h1{font-size:1.7rem;margin-top:0}.tarn h2{font-size:1.3rem}.tarn h3{font-size:1.08rem;margin-top:1.25rem}
.tarn h4{font-size:1rem;margin-top:1rem}
.tarn p,.tarn li,.tarn dd,.tarn figcaption{max-width:64ch;overflow-wrap:anywhere}
.tarn p{margin:.5rem 0}.tarn ul{margin:.5rem 0;padding-left:1.25rem}
.tarn a{color:var(--link)}
.tarn .quiet,.tarn figcaption{color:var(--quiet)}.tarn .quiet,.tarn figcaption{font-size:.9rem}
.tarn .bad{color:var(--bad)}
.tarn article{border-top:1px solid var(--line);margin-top:2rem}
.tarn .sides{display:grid;gap:0 2.5rem;grid-template-columns:minmax(0,1fr)}
.tarn figure{margin:1rem 0;min-width:0}
.tarn figcaption{margin-top:.5rem}.tarn figure svg{display:block;width:100%;max-width:26.25rem;height:auto}
.tarn .wide{overflow-x:auto;margin:.75rem 0;max-width:100%}
.tarn .wide:focus-visible,.tarn a:focus-visible{outline:2px solid var(--link);outline-offset:2px}
.tarn table{border-collapse:collapse;font-size:.94rem;font-variant-numeric:tabular-nums}
.tarn caption{text-align:left;font-weight:600;padding:.2rem 0;max-width:44rem}
.tarn th,.tarn td{padding:.25rem .75rem .25rem 0;text-align:left;vertical-align:top;font-weight:400}
.tarn th:last-child,.tarn td:last-child{padding-right:0}
.tarn thead th{border-bottom:1px solid var(--text);font-weight:600;vertical-align:bottom}
.tarn tbody tr+tr>*{border-top:1px solid var(--line)}
.tarn td,.tarn th[scope=row]{max-width:min(22rem,60vw);min-width:2.5rem;overflow-wrap:break-word}
.tarn th[scope=row]{min-width:4rem}.tarn th.h{min-width:7.5rem}
.tarn .r{text-align:right}.tarn .r,.tarn .n{white-space:nowrap}
.tarn th.r{white-space:normal}
.tarn .verdict{font-weight:600}
.tarn .stat{margin:.25rem 0}
.tarn dl{display:grid;grid-template-columns:minmax(7rem,max-content) minmax(0,1fr);gap:.25rem 1rem;margin:.5rem 0}
.tarn dt{color:var(--quiet)}.tarn dd{margin:0}
.tarn pre{background:var(--shade);padding:.75rem;overflow-x:auto;max-width:100%;font:.875rem/1.45 ui-monospace,
SFMono-Regular,Menlo,Consolas,monospace;white-space:pre-wrap;overflow-wrap:anywhere}
.tarn nav ul{list-style:none;padding:0;display:flex;flex-wrap:wrap;gap:.25rem 1.25rem}
@media (min-width:66rem){.tarn .sides{grid-template-columns:minmax(0,1fr) 26.25rem}.tarn .sides>.text{min-width:0}}
@media (max-width:30rem){.tarn dl{grid-template-columns:minmax(0,1fr)}.tarn dd{margin-bottom:.4rem}
.tarn td,.tarn th{padding-right:.6rem}.tarn #summary .d{display:none}}
@media print{.tarn{padding:0;max-width:none;font-size:10pt;color-scheme:light}
.tarn h2,.tarn h3,.tarn h4,.tarn caption,.tarn thead{break-after:avoid}.tarn figure,.tarn tr,.tarn .stat{break-inside:avoid}
.tarn .wide,.tarn pre{overflow:visible}.tarn table{font-size:8.5pt}.tarn thead{display:table-header-group}
.tarn .r,.tarn .n{white-space:normal}.tarn td,.tarn th[scope=row]{max-width:60mm;min-width:0}
.tarn th.h{min-width:0}.tarn nav{display:none}.tarn a{color:inherit;text-decoration:none}
.tarn figure svg{max-width:9.5cm}}
@page{size:A4;margin:18mm 16mm}
)";

constexpr const char* kDarkText = R"(
.tarn{--text:#e8e8e8;--quiet:#b3b3b3;--paper:#16181c;--shade:#21242a;--line:#3d4249;--link:#7cbcf0;--bad:#ff9d8a;
color-scheme:dark}
)";

/// The colours of the plots on a dark page, in place of the attributes that they have themselves.
std::string DarkColours() {
    std::string rules;
    const auto add = [&](const PlotColour& colour) {
        const std::string name(colour.name);
        const std::string value(colour.onBlack);
        rules += ".tarn ." + name + "{fill:" + value + "}.tarn ." + name + "[stroke]{stroke:" + value + "}.tarn ." +
                 name + "-line{stroke:" + value + "}\n";
    };
    for (const PlotColour& colour : {kInk, kFaint, kGrid}) add(colour);
    for (const PlotColour& colour : kGroupColours) add(colour);
    return rules;
}

}  // namespace

const std::string& HtmlStyleSheet() {
    static const std::string sheet =
        std::string(kRules) + "@media screen and (prefers-color-scheme:dark){" + kDarkText + DarkColours() + "}\n";
    return sheet;
}

}  // namespace tarn
