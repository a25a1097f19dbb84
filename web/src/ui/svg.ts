/** What the engine's plots are made of. Anything else is not shown. */
const elements = new Set([
  "svg", "g", "title", "text", "tspan", "rect", "circle", "line", "path", "polyline", "polygon",
]);
const attribute =
  /^(xmlns|role|width|height|viewBox|font-(family|size|weight)|fill(-opacity)?|stroke(-(opacity|width|linecap|linejoin|dasharray))?|opacity|points|d|[xyr]|[cr][xy]|[xy][12]|d[xy]|transform|shape-rendering|text-anchor|dominant-baseline|aria-hidden)$/;
const namespace = "http://www.w3.org/2000/svg";

/** Why a plot may not be shown; "" where it may. Values that refer to something are none of a plot. */
export function problemOfPlot(root: Element): string {
  for (const element of [root, ...root.querySelectorAll("*")]) {
    if (element.namespaceURI !== namespace || !elements.has(element.localName)) {
      return `the element ${element.localName}`;
    }
    for (const { name, value } of element.attributes) {
      if (!attribute.test(name) || /url\s*\(|javascript:/i.test(value)) return `the attribute ${name}`;
    }
  }
  return "";
}

/** The element of a plot's text, as data and never as markup of the page. */
export function plotElement(text: string): SVGElement | null {
  const parsed = new DOMParser().parseFromString(text, "image/svg+xml").documentElement;
  if (problemOfPlot(parsed) !== "") return null;
  return document.importNode(parsed, true) as unknown as SVGElement;
}
