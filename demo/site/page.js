// The roast slider, the order button, and a page that loads itself anew when it is published again.
const roasts = [
  [0, "Light", "citrus, honey, black tea"],
  [34, "Medium", "hazelnut, caramel, red apple"],
  [67, "Dark", "cocoa, molasses, a little smoke"],
];
const slider = document.getElementById("slider");
const order = document.getElementById("order");

slider.addEventListener("input", () => {
  const [, name, notes] = roasts.findLast(([from]) => slider.value >= from);
  document.documentElement.style.setProperty("--roast", slider.value + "%");
  document.getElementById("name").textContent = name;
  document.getElementById("notes").textContent = notes;
});

order.addEventListener("click", () => {
  order.classList.add("done");
  order.textContent = "On its way";
});

// A page from a file may not fetch its neighbours, but it may run them.
let shown;
window.published = (version) => {
  shown ??= version;
  if (version !== shown) location.reload();
};
setInterval(() => {
  const script = document.createElement("script");
  script.src = "version.js?" + Date.now();
  script.onload = script.onerror = () => script.remove();
  document.head.append(script);
}, 250);
