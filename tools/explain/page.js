// Everything can be read without this: it adds the keyboard, the line at the bottom, and what belongs together.
"use strict";
(() => {
  const body = document.body;
  const told = document.getElementById("told");
  body.classList.add("live");
  const uses = () => [...document.querySelectorAll("details.u")].filter((use) => !use.parentElement.closest("details.u:not([open])"));
  const tops = () => [...document.querySelectorAll("details.u.top")];
  const useOf = (element) => element && element.closest && element.closest("details.u");
  const say = (text) => { told.textContent = text; };

  const focusUse = (use) => {
    const summary = use.querySelector("summary");
    summary.scrollIntoView({ block: "nearest" });
    summary.focus();
  };
  // The use before or behind the place where the reader is.
  const go = (step) => {
    const all = uses();
    if (all.length === 0) return;
    const here = useOf(document.activeElement);
    const at = here ? all.indexOf(here) + step : step > 0 ? 0 : all.length - 1;
    if (all[at]) focusUse(all[at]);
  };
  // The uses in `root`, itself included, that are closed while all around them are open.
  const frontier = (root) => [root, ...root.querySelectorAll("details.u")].filter((use) =>
    !use.open && (use === root || !use.parentElement.closest("details.u:not([open])")));
  const depth = (use, root) => {
    let steps = 0;
    for (let at = use; at !== root; at = at.parentElement.closest("details.u")) ++steps;
    return steps;
  };
  const forward = (root) => frontier(root).forEach((use) => { use.open = true; });
  const backward = (root) => {
    const open = [root, ...root.querySelectorAll("details.u")].filter((use) => use.open);
    const deepest = Math.max(-1, ...open.map((use) => depth(use, root)));
    open.filter((use) => depth(use, root) === deepest).forEach((use) => { use.open = false; });
  };
  const here = () => {
    const use = useOf(document.activeElement) || tops()[0];
    if (use && !useOf(document.activeElement)) focusUse(use);
    return use;
  };
  const step = (how) => { const use = here(); if (use) how(use); };
  const closeAll = () => document.querySelectorAll("details.u[open]").forEach((use) => { use.open = false; });

  document.addEventListener("keydown", (event) => {
    if (event.ctrlKey || event.altKey || event.metaKey) return;
    const keys = {
      n: () => go(1), p: () => go(-1), ArrowRight: () => step(forward), ArrowLeft: () => step(backward), c: closeAll,
    };
    if (keys[event.key]) {
      keys[event.key]();
      event.preventDefault();
    }
  });
  const buttons = { next: () => go(1), previous: () => go(-1), forward: () => step(forward),
    backward: () => step(backward), close: closeAll };
  for (const [name, action] of Object.entries(buttons)) {
    const button = document.getElementById(name);
    // The place of the reader is where the focus is, so a button must not take it.
    button.addEventListener("mousedown", (event) => event.preventDefault());
    button.addEventListener("click", action);
  }

  // A link to a use opens it.
  document.addEventListener("click", (event) => {
    const link = event.target.closest("a[href^='#x']");
    const use = link && document.getElementById(link.hash.slice(1));
    if (!use) return;
    for (let at = use; at; at = at.parentElement.closest("details.u")) at.open = true;
    focusUse(use);
    event.preventDefault();
  });

  let lit = [];
  const light = (element) => {
    lit.forEach((other) => other.classList.remove("lit"));
    const number = element && element.dataset.x;
    lit = number ? [...document.querySelectorAll(`[data-x="${number}"]`)] : [];
    lit.forEach((other) => other.classList.add("lit"));
  };
  const look = (event) => {
    const piece = event.target.closest && event.target.closest("[title]");
    if (piece) say(piece.title);
    light(event.target.closest && event.target.closest("[data-x]"));
  };
  document.addEventListener("mouseover", look);
  document.addEventListener("focusin", look);

  // On paper nothing can be opened.
  let opened = [];
  addEventListener("beforeprint", () => {
    opened = [...document.querySelectorAll("details:not([open])")].slice(0, 5000);
    opened.forEach((closed) => { closed.open = true; });
  });
  addEventListener("afterprint", () => opened.forEach((closed) => { closed.open = false; }));
  say("Point at a part of the output, or move to it, to see where it came from.");
})();
