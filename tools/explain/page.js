// Everything can be read without this: it adds the keyboard, the line at the bottom, and what belongs together.
"use strict";
(() => {
  const body = document.body;
  const told = document.getElementById("told");
  body.classList.add("live");
  // Elements are made of the trees that the page holds as text for browsers without scripts.
  const make = (text) => {
    const tree = document.createElement("div");
    tree.innerHTML = text.textContent;
    const made = [...tree.children];
    text.replaceWith(...made);
    return made;
  };
  const makeAll = (root) => root.querySelectorAll("noscript.t").forEach(make);
  const inSight = new IntersectionObserver((blocks) => blocks.forEach((block) => {
    if (block.isIntersecting) {
      makeAll(block.target);
      inSight.unobserve(block.target);
    }
  }), { rootMargin: "500px" });
  document.querySelectorAll(".block").forEach((block) => inSight.observe(block));
  const useCalled = (id) => {
    const number = Number(id.slice(1));
    const isThere = (text) => Number(text.dataset.from) <= number && number < Number(text.dataset.to);
    [...document.querySelectorAll("noscript.t")].filter(isThere).forEach(make);
    return document.getElementById(id);
  };

  // Uses that can be seen, and trees in which there may be some.
  const places = () => [...document.querySelectorAll("details.u, noscript.t")]
    .filter((place) => !place.parentElement.closest("details.u:not([open])"));
  const useOf = (element) => element && element.closest && element.closest("details.u");
  const say = (text) => { told.textContent = text; };

  const focusUse = (use) => {
    const summary = use.querySelector("summary");
    summary.scrollIntoView({ block: "nearest" });
    summary.focus();
  };
  // The use before or behind the place where the reader is.
  const go = (step) => {
    for (;;) {
      const all = places();
      const here = useOf(document.activeElement);
      const next = all[here ? all.indexOf(here) + step : step > 0 ? 0 : all.length - 1];
      if (!next) return;
      if (next.matches("details")) return focusUse(next);
      make(next);
    }
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
    if (!useOf(document.activeElement)) go(1);
    return useOf(document.activeElement);
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
    const use = link && useCalled(link.hash.slice(1));
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
    makeAll(document);
    opened = [...document.querySelectorAll("details:not([open])")].slice(0, 5000);
    opened.forEach((closed) => { closed.open = true; });
  });
  addEventListener("afterprint", () => opened.forEach((closed) => { closed.open = false; }));
  say("Point at a part of the output, or move to it, to see where it came from.");
})();
