// The style of the page: for wide screens, telephones and paper, light and dark.

#ifndef RECORDS_PAGE_PAGESTYLE_H
#define RECORDS_PAGE_PAGESTYLE_H

namespace CallRecordingUtils {

// People who see few colours can tell the colours of the series apart.
constexpr char kPageStyle[] = R"(
:root { color-scheme: light dark; --back: #fff; --text: #1d2126; --dim: #5b6470; --line: #d9dde3;
  --bar: #2f6fb2; --s0: #0072b2; --s1: #8f6400; --s2: #00735a; --s3: #a3427c; --s4: #7a4fa3;
  --s5: #b84a00; --others: #5f6873; --none: #3d434b; --warn: #b00020; }
@media screen and (prefers-color-scheme: dark) { :root { --back: #15181c; --text: #e4e7eb;
  --dim: #9aa4b0; --line: #343b44; --bar: #5b9bd8; --s0: #4fa3e0; --s1: #e69f00; --s2: #1fb98a;
  --s3: #dd93bd; --s4: #b79be0; --s5: #f07a2e; --others: #9aa4b0; --none: #c9d1da;
  --warn: #ff8a80; } }
* { box-sizing: border-box; }
body { margin: 0 auto; max-width: 84rem; padding: 1.5rem; background: var(--back);
  color: var(--text); font: 15px/1.45 system-ui, sans-serif; overflow-wrap: break-word; }
h1 { font-size: 1.6rem; margin: 0 0 .5rem; }
h2 { font-size: 1.15rem; margin: 2.2rem 0 .6rem; break-after: avoid; }
p { margin: .4rem 0; }
small, .dim { color: var(--dim); }
code { font: .88em ui-monospace, monospace; }
dl { display: grid; grid-template-columns: max-content 1fr; gap: .15rem 1rem; margin: 0; }
dt { color: var(--dim); }
dd { margin: 0; }
dd, td.wide, .legend li, ul { overflow-wrap: anywhere; }
.figures { display: flex; flex-wrap: wrap; gap: .8rem; padding: 0; margin: 1.4rem 0 0; }
.figures li { list-style: none; flex: 1 1 9rem; border: 1px solid var(--line);
  border-radius: .5rem; padding: .6rem .9rem; color: var(--dim); }
.figures data { display: block; color: var(--text); font-size: 1.5rem; font-weight: 600; }
.warning { border-left: 4px solid var(--warn); padding: .3rem .8rem; font-weight: 600; }
table { border-collapse: collapse; width: 100%; }
caption { text-align: left; padding: .3rem 0; color: var(--dim); }
summary { cursor: pointer; padding: .3rem 0; }
tr.missing td:first-child, #missing data { color: var(--warn); font-weight: 600; }
th { text-align: left; color: var(--dim); font-weight: 500; font-size: .85rem; }
th, td { padding: .4rem .7rem .4rem 0; border-bottom: 1px solid var(--line);
  vertical-align: top; }
tr { break-inside: avoid; }
td.number, th.number { text-align: right; white-space: nowrap; font-variant-numeric: tabular-nums; }
td.bar { width: 16%; min-width: 6rem; }
.bar i { display: block; height: .8rem; margin-top: .25rem; background: var(--bar);
  border-radius: 2px; min-width: 1px; print-color-adjust: exact;
  -webkit-print-color-adjust: exact; }
.time { white-space: nowrap; font-variant-numeric: tabular-nums; }
tr.never { color: var(--dim); }
#over-time th { white-space: normal; overflow-wrap: anywhere; }
.legend { display: flex; flex-wrap: wrap; gap: .2rem 1.2rem; padding: 0; margin: .4rem 0 .8rem; }
.legend li { list-style: none; }
.legend i { display: inline-block; width: .8rem; height: .8rem; border-radius: 2px;
  margin-right: .4rem; vertical-align: -.05rem; print-color-adjust: exact;
  -webkit-print-color-adjust: exact; }
.chart { display: grid; grid-template-columns: max-content 1fr; gap: .3rem .6rem;
  break-inside: avoid; }
.scale { display: flex; flex-direction: column; justify-content: space-between;
  text-align: right; color: var(--dim); font-size: .8rem; line-height: 1; height: 15rem; }
.chart svg { width: 100%; height: 15rem; overflow: visible; print-color-adjust: exact;
  -webkit-print-color-adjust: exact; }
.times { grid-column: 2; position: relative; height: 1.3rem; color: var(--dim);
  font-size: .8rem; }
.times span { position: absolute; transform: translateX(-50%); white-space: nowrap; }
.times span:first-child { transform: none; left: 0 !important; }
.times span:last-child:not(:first-child) { transform: none; left: auto !important; right: 0; }
.grid { stroke: var(--line); vector-effect: non-scaling-stroke; fill: none; }
.s0 { fill: var(--s0); background: var(--s0); } .s1 { fill: var(--s1); background: var(--s1); }
.s2 { fill: var(--s2); background: var(--s2); } .s3 { fill: var(--s3); background: var(--s3); }
.s4 { fill: var(--s4); background: var(--s4); } .s5 { fill: var(--s5); background: var(--s5); }
.others { fill: var(--others); background: var(--others); }
.none { fill: var(--none); background: var(--none); }
@media screen and (max-width: 45rem) {
  body { padding: 1rem; }
  dl { grid-template-columns: 1fr; gap: 0; }
  dd { margin-bottom: .4rem; }
  .times span:nth-child(even) { display: none; }
  thead { display: none; }
  table, tbody, caption { display: block; }
  tr { display: flex; flex-wrap: wrap; gap: .1rem .8rem; border-bottom: 1px solid var(--line);
    padding: .6rem 0; }
  td { border: 0; padding: 0; }
  td.wide, td.bar { flex: 1 1 100%; width: auto; }
  td.name { flex-basis: 80%; }
  td[data-name]:not(:empty)::before { content: attr(data-name) " "; color: var(--dim); }
}
@page { size: A4; margin: 18mm 14mm 16mm; @top-left { font: 8pt sans-serif; width: 100%; }
  @bottom-right { font: 8pt sans-serif; content: "page " counter(page) " of " counter(pages); } }
@media print { :root { color-scheme: light; --text: #000; --dim: #444; --line: #bbb; }
  body { font-size: 9pt; line-height: 1.3; padding: 0; max-width: none; }
  h1 { font-size: 14pt; } h2 { font-size: 11pt; margin-top: 1.2rem; }
  small, #over-time { font-size: 7.5pt; line-height: 1.25; } .figures data { font-size: 12pt; }
  th, td { padding: .2rem .4rem .2rem 0; } td.name { min-width: 11rem; }
  td.bar { width: 8%; min-width: 2rem; }
  details::details-content { content-visibility: visible; }
  details:has(.never):not([open])::details-content { content-visibility: hidden; display: none; } }
)";

} // namespace CallRecordingUtils

#endif
