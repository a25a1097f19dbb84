const paths = {
  plus: "M12 5v14M5 12h14",
  trash: "M5 7h14M10 7V4.5h4V7M7 7l.8 12.5h8.4L17 7M10.5 11v5M13.5 11v5",
  undo: "M9 6 4.5 10.5 9 15M5 10.5h8.5a5 5 0 0 1 0 10H11",
  redo: "m15 6 4.5 4.5L15 15m4-4.5h-8.5a5 5 0 0 0 0 10H13",
  file: "M7 3.5h7l4 4v13H7zM14 3.5V8h4",
  chevron: "m7 10 5 5 5-5",
  close: "m6.5 6.5 11 11m0-11-11 11",
  play: "M8 5.5v13l10.5-6.5z",
  check: "m5 12.5 4.5 4.5L19 7.5",
  cross: "m7 7 10 10M17 7 7 17",
  alert: "M12 4 2.8 19.5h18.4zM12 10v4.5M12 17v.1",
  spark: "M12 3.5 14 10l6.5 2-6.5 2-2 6.5-2-6.5-6.5-2L10 10z",
  eye: "M2.5 12S6 5.5 12 5.5 21.5 12 21.5 12 18 18.5 12 18.5 2.5 12 2.5 12zM12 9.2a2.8 2.8 0 1 0 0 5.6 2.8 2.8 0 0 0 0-5.6z",
  pen: "M4 20l1-4.5L16.5 4 20 7.5 8.5 19zM14.5 6 18 9.5",
} as const;

export function Icon({ name }: { name: keyof typeof paths }) {
  return (
    <svg class="icon" viewBox="0 0 24 24" aria-hidden="true" focusable="false">
      <path d={paths[name]} />
    </svg>
  );
}
