#include "ReportScript.h"

namespace vqrx::client::v0 {

const char* const kReportScript = R"js(
(() => {
  const written = document.querySelector("time[data-ms]");
  const age = document.getElementById("age");
  const show = () => {
    const seconds = Math.max(0, Math.round((Date.now() - written.dataset.ms) / 1000));
    const old = seconds > 3 * written.dataset.every + 5;
    age.textContent = (seconds < 120 ? seconds + " s" : Math.round(seconds / 60) + " min") + " ago" +
        (old ? ". Nobody writes this page any more." : "");
    age.classList.toggle("bad", old);
  };
  show();
  setInterval(show, 1000);
  // A refresh by the page's head would lose the range that the reader chose.
  setTimeout(() => location.reload(), Math.min(written.dataset.every * 1000, 2 ** 31 - 1));
})();
)js";

// tests/browser/report_test.py fails if this is not the hash of the script above.
const char* const kReportScriptHash = "sha256-dpPLmqeqdThwxrZNhkz7wYtkhjj3Qu1XBego6mL8+HU=";

} // namespace vqrx::client::v0
