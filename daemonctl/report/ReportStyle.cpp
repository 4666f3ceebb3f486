#include "ReportStyle.h"

namespace vqrx::client::v0 {

const char* const kReportStyle = R"css(
:root {
  color-scheme: light dark;
  --ground: #ffffff; --ink: #1a1d21; --soft: #565d66; --line: #d5dae0; --stripe: #f4f6f8;
  --life: #5b9f6d; --end: #b3261e; --stop: #3d5a99; --failed: #a35200; --gap: #8a929c;
}
@media (prefers-color-scheme: dark) {
  :root {
    --ground: #15181c; --ink: #e8eaed; --soft: #a9b1ba; --line: #3a4149; --stripe: #1d2126;
    --life: #4c8d5f; --end: #ff8a80; --stop: #9db8ff; --failed: #ffb866; --gap: #7d8690;
  }
}
* { box-sizing: border-box; }
body {
  margin: 0 auto; padding: 1.25rem clamp(.75rem, 2vw, 2rem) 3rem; max-width: 110rem;
  background: var(--ground); color: var(--ink);
  font: 15px/1.45 system-ui, sans-serif;
  overflow-wrap: break-word;
}
h1 { font-size: 1.5rem; line-height: 1.2; margin: 0 0 .25rem; }
h2 { font-size: 1.1rem; margin: 2rem 0 .5rem; }
p { margin: .25rem 0; }
a { color: inherit; }
.soft { color: var(--soft); }
.bad { color: var(--end); }
time, .time, td .bad { white-space: nowrap; }
#now th.number + th, #now td.number + td { padding-left: 1.5rem; }
.alarm {
  margin: .5rem 0; padding: .5rem .75rem; font-weight: 600;
  border: 2px solid var(--end); border-left-width: .6rem; color: var(--end);
}
.range { display: none; }
#all { display: block; }
.range:target { display: block; }
.range:target ~ #all { display: none; }
.ranges { margin: .5rem 0; }
.command, ul.reasons { overflow-wrap: anywhere; }
.command { font-family: ui-monospace, Consolas, monospace; font-size: .9em; }
dl.facts { display: flex; flex-wrap: wrap; gap: .5rem 2rem; margin: 1rem 0 0; }
dl.facts dt { color: var(--soft); font-size: .85rem; }
dl.facts dd { margin: 0; font-size: 1.15rem; font-variant-numeric: tabular-nums; }
table { width: 100%; border-collapse: collapse; }
th, td { text-align: left; vertical-align: top; padding: .35rem .6rem .35rem 0; }
thead th { border-bottom: 2px solid var(--line); font-size: .85rem; color: var(--soft); }
tbody tr { border-bottom: 1px solid var(--line); }
td.number, th.number { text-align: right; font-variant-numeric: tabular-nums; white-space: nowrap; }
th { overflow-wrap: normal; }
ul.reasons { list-style: none; margin: 0; padding: 0; }
td ul.reasons, td ul.reasons li { display: inline; }
td ul.reasons li + li::before { content: ", "; }
#history th:last-child, #history td:last-child { width: 24%; padding: .35rem 0 .35rem 1rem; }
.legend { display: flex; flex-wrap: wrap; gap: .25rem 1.25rem; margin: .5rem 0 1rem; font-size: .9rem; }
.legend span { display: inline-flex; align-items: center; gap: .4rem; }
.legend svg { width: 26px; height: 18px; flex: none; }
.lane, .axis { display: grid; grid-template-columns: minmax(0, 22rem) minmax(0, 1fr); gap: 0 1rem; }
.lane { padding: .3rem 0; align-items: center; border-top: 1px solid var(--line); }
.lane:target { background: var(--stripe); }
.lane p { margin: 0; }
.lane svg { display: block; width: 100%; height: 22px; background: var(--stripe); }
.axis .marks { position: relative; height: 1.5rem; font-size: .8rem; color: var(--soft); }
.axis .marks span { position: absolute; transform: translateX(-50%); white-space: nowrap; }
.life { fill: var(--life); stroke: var(--life); stroke-width: 1px; }
.cut { stroke-dasharray: 2 2; }
.end { stroke: var(--end); stroke-width: 2px; }
.stop { stroke: var(--stop); stroke-width: 4px; }
.failed { stroke: var(--failed); stroke-width: 2px; }
.gap { fill: var(--gap); fill-opacity: .35; stroke: var(--gap); stroke-width: 1px; stroke-dasharray: 3 3; }
.tick { stroke: var(--line); stroke-width: 1px; }
@media (max-width: 55rem) {
  .lane, .axis { grid-template-columns: minmax(0, 1fr); }
  .axis .name { display: none; }
  /* not "display: none": a screen reader names the columns, also where nobody sees them */
  thead { position: absolute; left: 0; max-width: 100%; clip-path: inset(50%); white-space: normal; }
  thead tr, thead th { display: inline; }
  table, tbody, tr, td { display: block; width: 100%; }
  table { margin-bottom: 1rem; }
  tbody tr { padding: .5rem 0; }
  td, td.number, #history td:last-child { width: 100%; padding: .1rem 0; text-align: left; white-space: normal; }
  td[data-name]::before { content: attr(data-name) ": "; color: var(--soft); }
}
@media print { .lane, tr, .alarm { break-inside: avoid; } .ranges { display: none; } }
)css";

} // namespace vqrx::client::v0
