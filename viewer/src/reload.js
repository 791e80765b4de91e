// Only in the copy of the page that `export --watch --view` serves: loads the page again once the
// server has another one.
const { version } = document.currentScript.dataset;
const exports = new EventSource(`/events?shown=${version}`);
exports.addEventListener('exported', () => {
  exports.close();
  location.reload(); // keeps what is behind the # of the address
});
