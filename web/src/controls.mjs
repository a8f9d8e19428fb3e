// The controls as rows of the page: a slider, a number, a mark at the default, a sentence.
import { groups, lensWords, words } from './words.mjs';

const LARGEST = 16384; // columns and rows of a frame
let ids = 0;

/** An element with properties, attributes and children. Text is only ever set as text. */
export function element(tag, { text, on = {}, ...attributes } = {}, ...children) {
  const e = document.createElement(tag);
  if (text !== undefined) e.textContent = text;
  for (const [name, value] of Object.entries(attributes))
    if (value === true) e.setAttribute(name, '');
    else if (value !== false && value !== null && value !== undefined) e.setAttribute(name, value);
  for (const [name, handler] of Object.entries(on)) e.addEventListener(name, handler);
  e.append(...children);
  return e;
}

const clamp = (v, low, high) => Math.min(high, Math.max(low, v));

// One slider with its number. `get` and `set` reach the value; refresh() shows it. `text` is the id of the sentence about
// it; `ends`, where the range of the slider depends on the frame, gives it.
function slider({ label, hidden, low, high, range = [low, high], ends, step = 1, standard, get, set, id, text = `${id}-text`,
  back = () => set(standard) }) {
  const number = element('input', { type: 'number', id, min: low, max: high, step: 1, inputmode: 'numeric',
    'aria-label': hidden ? label : null, 'aria-describedby': text });
  const track = element('input', { type: 'range', min: range[0], max: range[1], step, 'aria-label': `${label}, slider`,
    'aria-describedby': text, 'data-for': id });
  const mark = element('span', { class: 'mark', 'aria-hidden': 'true', title: `default ${standard}` });
  const place = (clamp(standard, ...range) - range[0]) / (range[1] - range[0]);
  mark.style.setProperty('--at', place);
  const take = (text) => {
    const value = Math.round(Number(text));
    if (text.trim() === '' || !Number.isFinite(value)) return;
    set(clamp(value, low, high));
  };
  track.addEventListener('input', () => take(track.value));
  track.addEventListener('dblclick', back);
  number.addEventListener('input', () => take(number.value));
  number.addEventListener('change', () => { number.value = get(); });
  const refresh = () => {
    const value = get();
    if (ends) [track.min, track.max] = range = ends();
    if (document.activeElement !== number) number.value = value;
    track.value = value;
    track.setAttribute('aria-valuetext', String(value));
    track.style.setProperty('--fill', (clamp(value, ...range) - range[0]) / (range[1] - range[0]));
  };
  return { row: element('span', { class: 'slide' }, element('span', { class: 'track' }, track, mark), number), refresh };
}

const partNames = { 'B,Gb,Gr,R': ['B', 'Gb', 'Gr', 'R'], 'R,G,B': ['R', 'G', 'B'], 'MIN,MAX': ['from', 'to'] };

/**
 * All controls, in the groups of the tool's help.
 * @param state settings (a getter), change(edit): edits a copy of the settings and takes it
 */
export function buildControls(root, engine, state) {
  const rows = [];
  for (const { title, open } of groups) {
    const body = element('div', { class: 'rows' });
    const details = element('details', { open, class: 'group', 'data-group': title },
      element('summary', {}, element('h3', { text: title }), element('span', { class: 'count', 'aria-live': 'off' })), body);
    if (title === 'Lens correction') buildLens(body, engine, state, rows, details);
    else for (const control of engine.controls.filter((c) => c.group === title)) body.append(buildControl(control, state, rows, details));
    root.append(details);
  }
  // Touching an element costs the browser a layout: rows are shown anew only when what they show has changed.
  return function refresh(everything = false) {
    const { settings } = state, common = `${settings.quality} ${state.frame?.width}x${state.frame?.height}`;
    let any = false;
    for (const row of rows) {
      const now = `${common} ${row.key ? settings.get(row.key) : JSON.stringify(settings.lens)}`;
      if (now === row.shown && !everything) continue;
      row.shown = now;
      row.refresh();
      any = true;
    }
    if (!any) return;
    for (const details of root.querySelectorAll('details.group')) {
      const changed = details.querySelectorAll('.control.changed').length;
      const text = changed ? `${changed} set` : '';
      if (details.querySelector('.count').textContent !== text) details.querySelector('.count').textContent = text;
    }
  };
}

function frameOf({ label, unit, range, text, standard, id, heading = 'label' }) {
  const reset = element('button', { type: 'button', class: 'reset', title: `Back to the default, ${standard}`,
    'aria-label': `${label}: back to the default, ${standard}`, text: '↺' });
  const box = element('div', { class: 'control' },
    element('div', { class: 'head' }, element(heading, { class: 'name', text: label, for: heading === 'label' ? id : null, id: `${id}-name` }),
      element('span', { class: 'unit', text: unit ?? '' }), reset),
    element('p', { class: 'text', id: `${id}-text` }, element('span', { text: `${text} ` }),
      element('span', { class: 'range', text: range }), element('span', { class: 'idle' })));
  return { box, reset, insert: (row) => box.insertBefore(row, box.lastChild) };
}

function buildControl(control, state, rows, details) {
  const w = words[control.key] ?? { label: control.key, text: `${control.what}.` }, id = `c${++ids}`;
  const { key, kind, count, low, high, standard } = control;
  const change = (values) => state.change((s) => s.set(key, values));
  const idle = (box) => {
    const quality = state.settings.quality;
    const asleep = w.in && !w.in.includes(quality);
    box.classList.toggle('asleep', !!asleep);
    const text = asleep && w.in.length ? ` No effect in quality ${quality}.` : '', place = box.querySelector('.idle');
    if (place.textContent !== text) place.textContent = text;
    box.classList.toggle('changed', !state.settings.isDefault(key));
  };
  if (kind === 'flag') {
    const input = element('input', { type: 'checkbox', id, role: 'switch', 'aria-describedby': `${id}-text` });
    input.addEventListener('change', () => change([input.checked ? 1 : 0]));
    const box = element('div', { class: 'control flag', 'data-key': key },
      element('div', { class: 'head' }, element('label', { class: 'name', for: id, text: w.label }), input),
      element('p', { class: 'text', id: `${id}-text` }, element('span', { text: `${w.text} ` }), element('span', { class: 'range', text: 'Off by default.' }),
        element('span', { class: 'idle' })));
    rows.push({ key, refresh: () => { input.checked = state.settings.get(key)[0] === 1; idle(box); } });
    return box;
  }
  const { box, reset, insert } = frameOf({ label: w.label, unit: w.unit, text: w.text, standard: standard.join(', '), id,
    heading: count === 1 ? 'label' : 'span', range: `${low} to ${high}, default ${standard.join(', ')}.` });
  box.dataset.key = key;
  reset.addEventListener('click', () => change(standard));
  const parts = [];
  const add = (label, i, all) => {
    const part = slider({ label: `${w.label} ${label}`, hidden: count > 1, low, high, range: w.range, step: w.step, standard: standard[i ?? 0],
      id: count === 1 ? id : `${id}-${all ? 'all' : i}`, text: `${id}-text`,
      get: () => state.settings.get(key)[i ?? 0],
      set: (v) => {
        const values = [...state.settings.get(key)];
        if (all) values.fill(v);
        else values[i ?? 0] = v;
        // The ends of a range push each other.
        if (key.endsWith('_min_max') && values[0] > values[1]) values[1 - i] = v;
        change(values);
      } });
    part.row.dataset.part = all ? 'all' : String(i ?? 0);
    parts.push(part);
    return part.row;
  };
  if (count === 1) {
    insert(add('', 0));
  } else if (count === 9) {
    // A matrix is a table of numbers; sliders would say nothing.
    const grid = element('div', { class: 'matrix', role: 'group', 'aria-labelledby': `${id}-name` });
    for (let i = 0; i < 9; ++i) {
      const number = element('input', { type: 'number', min: low, max: high, step: 1, 'aria-label': `Row ${Math.floor(i / 3) + 1}, column ${i % 3 + 1}`,
        'aria-describedby': `${id}-text` });
      number.addEventListener('input', () => {
        const v = Math.round(Number(number.value));
        if (number.value.trim() === '' || !Number.isFinite(v)) return;
        const values = [...state.settings.get(key)];
        values[i] = clamp(v, low, high);
        change(values);
      });
      grid.append(number);
      parts.push({ refresh: () => { if (document.activeElement !== number) number.value = state.settings.get(key)[i]; } });
    }
    insert(grid);
  } else {
    const names = partNames[control.names.join(',')] ?? control.names;
    const list = element('div', { class: 'parts', role: 'group', 'aria-labelledby': `${id}-name` });
    if (w.together) list.append(element('span', { class: 'part' }, element('span', { class: 'site', text: 'all' }), add('all four', 0, true)));
    names.forEach((name, i) => {
      const site = element('span', { class: 'site', text: name });
      list.append(element('span', { class: `part site-${name.toLowerCase()}` }, site, add(name, i)));
    });
    insert(list);
  }
  rows.push({ key, refresh: () => { parts.forEach((p) => p.refresh()); idle(box); } });
  return box;
}

function buildLens(body, engine, state, rows, details) {
  const id = `c${++ids}`;
  const on = element('input', { type: 'checkbox', id, role: 'switch', 'aria-describedby': `${id}-text` });
  const standard = () => Object.fromEntries(engine.lensNumbers.map((n) => [n.key, n.standard]));
  on.addEventListener('change', () => state.change((s) => { s.lens = on.checked ? { ...standard(), ...(state.lastLens ?? {}) } : null; }));
  const box = element('div', { class: 'control flag', 'data-key': 'lens_correction' },
    element('div', { class: 'head' }, element('label', { class: 'name', for: id, text: 'Lens correction' }), on),
    element('p', { class: 'text', id: `${id}-text`, text: 'Brightens what the lens darkens towards the corners. Off by default.' }));
  body.append(box);
  rows.push({ refresh: () => { on.checked = !!state.settings.lens; box.classList.toggle('changed', !!state.settings.lens); } });
  for (const n of engine.lensNumbers) {
    const w = lensWords[n.key], own = `c${++ids}`;
    const { box: one, reset, insert } = frameOf({ label: w.label, unit: w.unit, text: w.text, standard: n.standard, id: own,
      range: `${n.low} to ${n.high}, default ${n.standard}.` });
    one.dataset.key = `lens.${n.key}`;
    const set = (v) => state.change((s) => { s.lens = { ...(s.lens ?? standard()), [n.key]: v }; });
    reset.addEventListener('click', () => set(n.standard));
    const part = slider({ label: w.label, low: n.low, high: n.high, range: w.range, standard: n.standard, id: own,
      get: () => state.settings.lens?.[n.key] ?? n.standard, set });
    insert(part.row);
    body.append(one);
    rows.push({ refresh: () => {
      const { lens } = state.settings;
      part.refresh();
      one.classList.toggle('asleep', !lens);
      one.classList.toggle('changed', !!lens && lens[n.key] !== n.standard);
    } });
  }
  // The optical centre; the middle of the frame unless it is said.
  const own = `c${++ids}`;
  const { box: centre, reset, insert } = frameOf({ label: 'Optical centre', unit: 'samples', text: 'Column and row of the lens’s axis.',
    standard: 'the middle', id: own, heading: 'span', range: `0 to ${LARGEST} each, default the middle of the frame.` });
  centre.dataset.key = 'lens.origin';
  const middle = () => state.change((s) => { if (s.lens) { const { origin, ...rest } = s.lens; s.lens = rest; } });
  reset.addEventListener('click', middle);
  const list = element('div', { class: 'parts', role: 'group', 'aria-labelledby': `${own}-name` });
  const parts = [0, 1].map((i) => slider({ label: `Optical centre ${i ? 'row' : 'column'}`, hidden: true,
    low: 0, high: LARGEST, standard: 0, back: middle, id: `${own}-${i}`, text: `${own}-text`,
    ends: () => [0, Math.max(1, ((i ? state.frame?.height : state.frame?.width) ?? 2048) - 1)],
    get: () => state.settings.lens?.origin?.[i] ?? (i ? state.frame.height : state.frame.width) >> 1,
    set: (v) => state.change((s) => {
      const origin = [...(s.lens?.origin ?? [state.frame.width >> 1, state.frame.height >> 1])];
      origin[i] = v;
      s.lens = { ...(s.lens ?? standard()), origin };
    }) }));
  parts.forEach((p, i) => {
    p.row.querySelector('.mark').remove();
    const site = element('span', { class: 'site', text: i ? 'y' : 'x' });
    list.append(element('span', { class: 'part' }, site, p.row));
  });
  insert(list);
  body.append(centre);
  rows.push({ refresh: () => {
    parts.forEach((p) => p.refresh());
    centre.classList.toggle('asleep', !state.settings.lens);
    centre.classList.toggle('changed', !!state.settings.lens?.origin);
  } });
}
