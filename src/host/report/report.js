// SPDX-License-Identifier: Apache-2.0
'use strict';
(() => {
  const all = (selector, within = document) => [...within.querySelectorAll(selector)];
  const byId = id => document.getElementById(id);
  const views = all('.view'), resources = all('.resource');
  const detailsOf = view => view.firstElementChild;

  // A drawing is text until its view is opened.
  const draw = view => {
    for (const kept of all('noscript', view)) {
      const part = document.createElement('template');
      part.innerHTML = kept.textContent;
      kept.replaceWith(part.content);
    }
  };
  const open = (view, isOpen) => {
    if (isOpen) draw(view);
    detailsOf(view).open = isOpen;
  };
  document.addEventListener('toggle', event => {
    const view = event.target.parentElement;
    if (event.target.open && view.classList.contains('view')) draw(view);
  }, true);

  const show = () => {
    const target = byId(decodeURIComponent(location.hash.slice(1)));
    if (!target) return;
    for (let part = target; part; part = part.parentElement) {
      if (part.localName === 'details') part.open = true;
      part.hidden = false;
    }
    if (target.classList.contains('view')) open(target, true);
    target.scrollIntoView();
  };
  addEventListener('hashchange', show);
  document.addEventListener('click', event => {
    const link = event.target.closest('a[href^="#"]');
    if (link && link.hash === location.hash) show();
  });

  // Letters as one would type them: small, without accents.
  const plain = text => text.normalize('NFKD').replace(/\p{M}/gu, '').toLowerCase().replace(/ς/g, 'σ');
  const texts = new Map();
  const textOf = part => {
    if (!texts.has(part)) {
      const said = part.classList.contains('view')
        ? all('summary, dd, figcaption, .words p', part).map(element => element.textContent).join(' ')
        : part.textContent;
      texts.set(part, plain(said));
    }
    return texts.get(part);
  };
  const links = new Map(all('.view-link').map(item => [item.firstElementChild.hash.slice(1), item]));
  const hideEmpty = (selector, content) => {
    for (const part of all(selector).reverse()) part.hidden = !part.querySelector(content + ':not([hidden])');
  };
  const search = () => {
    const words = plain(byId('search').value).split(/\s+/).filter(Boolean);
    const fits = part => words.every(word => textOf(part).includes(word));
    for (const part of [...views, ...resources]) part.hidden = !fits(part);
    for (const view of views) links.get(view.id).hidden = view.hidden;
    const isAll = words.length === 0;
    if (isAll) {
      for (const part of all('.folder, .kind, nav li')) part.hidden = false;
    } else {
      hideEmpty('.folder', '.view');
      hideEmpty('.kind', '.resource');
      hideEmpty('nav li:not(.view-link)', '.view-link');
    }
    const count = parts => parts.filter(part => !part.hidden).length + ' of ' + parts.length;
    byId('found').textContent = isAll ? '' : count(views) + ' views, ' + count(resources) + ' resources';
  };
  byId('search').addEventListener('input', search);
  byId('unfold').addEventListener('click', () => views.filter(view => !view.hidden).forEach(view => open(view, true)));
  byId('fold').addEventListener('click', () => views.forEach(view => open(view, false)));

  // Paper shows everything, and the screen afterwards what it showed before.
  let folded = [];
  addEventListener('beforeprint', () => {
    folded = all('details:not([open])');
    for (const part of folded) part.open = true;
    views.forEach(draw);
  });
  addEventListener('afterprint', () => folded.forEach(part => { part.open = false; }));

  document.querySelector('.tools').hidden = false;
  views.forEach(view => open(view, false));
  if (matchMedia('(max-width: 60rem)').matches) document.querySelector('nav > details').open = false;
  show();
})();
