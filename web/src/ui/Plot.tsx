import { useLayoutEffect, useRef } from "preact/hooks";
import { plotElement } from "./svg";

/** Much wider ones would be too small to read if they were made to fit. */
const widestFitted = 3;

/** A plot of the engine: in its place, or at its own size. */
export function Plot({ svg, natural = false }: { svg: string; natural?: boolean }) {
  const root = useRef<HTMLDivElement>(null);
  useLayoutEffect(() => {
    const element = plotElement(svg);
    if (element) {
      const [, , width = 1, height = 1] = (element.getAttribute("viewBox") ?? "").split(" ").map(Number);
      element.classList.toggle("is-fitted", !natural && width < widestFitted * height);
    }
    root.current!.replaceChildren(element ?? "This plot cannot be shown.");
  }, [svg, natural]);
  return <div ref={root} class="plot" />;
}
