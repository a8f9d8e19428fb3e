// Settings: the controls that differ from their defaults, and how they are written: as a settings file of the command
// line tool, as its options, as calls of the library, as properties of the stream element.

const LARGEST_FILE = 1 << 20;

export class Settings {
  #values = new Map();
  constructor(controls, lensNumbers) {
    this.controls = controls;
    this.lensNumbers = lensNumbers;
    this.byKey = new Map(controls.map((c) => [c.key, c]));
    this.quality = 15;
    this.lens = null;
  }
  copy() {
    const other = new Settings(this.controls, this.lensNumbers);
    other.#values = new Map(this.#values);
    other.quality = this.quality;
    other.lens = this.lens && { ...this.lens };
    return other;
  }
  get(key) {
    return this.#values.get(key) ?? this.byKey.get(key).standard;
  }
  set(key, values) {
    const control = this.byKey.get(key);
    if (values.length === control.count && values.every((v, i) => v === control.standard[i])) this.#values.delete(key);
    else this.#values.set(key, [...values]);
  }
  isDefault(key) {
    return !this.#values.has(key);
  }
  /** Controls that differ from their defaults, in the table's order. */
  get given() {
    return this.controls.filter((c) => this.#values.has(c.key)).map((c) => ({ ...c, value: this.#values.get(c.key) }));
  }
  get lensGiven() {
    return this.lens && this.lensNumbers.map((n) => ({ ...n, value: this.lens[n.key] }));
  }
}

export function asJson(s) {
  const lines = ['"ppl_settings": 1', `"quality": ${s.quality}`];
  for (const { key, kind, value } of s.given)
    lines.push(`"${key}": ${kind === 'flag' ? value[0] === 1 : kind === 'number' ? value[0] : `[${value.join(', ')}]`}`);
  if (s.lens) {
    const parts = s.lensGiven.map((n) => `"${n.key}": ${n.value}`);
    if (s.lens.origin) parts.push(`"origin": [${s.lens.origin.join(', ')}]`);
    lines.push(`"lens_correction": {${parts.join(', ')}}`);
  }
  return `{\n  ${lines.join(',\n  ')}\n}\n`;
}

export function asOptions(s) {
  const words = [`-q ${s.quality}`];
  for (const { option, kind, value } of s.given)
    words.push(kind === 'flag' ? option : `${option} ${value.join(',')}`);
  if (s.lens) {
    for (const n of s.lensGiven) words.push(`${n.option} ${n.value}`);
    if (s.lens.origin) words.push(`--lens-origin ${s.lens.origin.join(',')}`);
  }
  return `${words.join(' ')}\n`;
}

export function asC(s) {
  const lines = [`ppl_set_quality(context, ${s.quality});`];
  for (const { key, value } of s.given) {
    if (key === 'sensor_matrix')
      lines.push(`static const int32_t sensor_matrix[9] = {${value.join(', ')}};`, 'ppl_copy_sensor_matrix(context, sensor_matrix);');
    else if (key === 'medium_filter' || key === 'GbGr_correction')
      lines.push(`ppl_enable_${key}(context);`);
    else
      lines.push(`ppl_set_${key}(context, ${value.join(', ')}${key === 'contrast_c' ? ', 0, 0' : ''});`);
  }
  if (s.lens) {
    const [f1, s1, f2, s2] = s.lensGiven.map((n) => n.value), o = s.lens.origin;
    const centre = o ? o.join(', ') : 'width / 2, height / 2';
    const below = o ? `${o[1]} > height - ${o[1]} ? ${o[1]} : height - ${o[1]}` : 'height - height / 2';
    lines.push(`/* lens_table: width * ((${below}) + 1) words of uint16_t that stay valid as long as the context is in use */`,
      `ppl_set_lens_correction(context, width, height, ${centre}, lens_table, lens_table_bytes, ${f1}, ${s1}, ${f2}, ${s2});`,
      'ppl_enable_lens_correction(context);');
  }
  return `${lines.join('\n')}\n`;
}

export function asElement(s) {
  const words = [`quality=${s.quality}`];
  for (const { property, kind, value } of s.given) {
    if (kind === 'flag') words.push(`${property}=${value[0] === 1}`);
    else if (kind === 'number') words.push(`${property}=${value[0]}`);
    else if (property === 'black-levels' && value.every((v) => v === value[0])) words.push(`black-level=${value[0]}`);
    else if (property.includes(',')) property.split(',').forEach((name, i) => words.push(`${name}=${value[i]}`));
    else words.push(`${property}="<${value.join(',')}>"`);
  }
  if (s.lens) {
    words.push('lens=true');
    for (const n of s.lensGiven) words.push(`${n.option.slice(2)}=${n.value}`);
    if (s.lens.origin) words.push(`lens-origin="<${s.lens.origin.join(',')}>"`);
  }
  return `${words.join(' ')}\n`;
}

// What is said of a value that is none; files may hold anything, so it is cut short.
function shown(value) {
  let text;
  try {
    text = typeof value === 'number' ? String(value) : JSON.stringify(value) ?? String(value);
  } catch {
    text = 'brackets within brackets'; // deeper than the browser goes
  }
  return text.length > 40 ? `${text.slice(0, 40)}…` : text;
}
function number(name, value, low, high) {
  if (!Number.isInteger(value) || value < low || value > high)
    throw new Error(`${name} takes a whole number from ${low} to ${high}, not ${shown(value)}.`);
  return value;
}
const isObject = (value) => typeof value === 'object' && value !== null && !Array.isArray(value);

/** A settings file. Throws one sentence if it is none; nothing is taken then. */
export function parseSettings(text, empty) {
  if (text.length > LARGEST_FILE) throw new Error('This is no settings file: it has more than a megabyte.');
  let file;
  try {
    file = JSON.parse(text);
  } catch {
    throw new Error('This is no settings file: it is not JSON.');
  }
  if (!isObject(file) || !Object.hasOwn(file, 'ppl_settings'))
    throw new Error('This is no settings file: "ppl_settings": 1 is missing in it.');
  if (file.ppl_settings !== 1)
    throw new Error(`The file holds settings of version ${shown(file.ppl_settings)}; this page reads version 1.`);
  const s = empty.copy();
  for (const [key, value] of Object.entries(file)) {
    if (key === 'ppl_settings') continue;
    const control = s.byKey.get(key);
    if (key === 'quality') {
      s.quality = number('quality', value, 0, 15);
    } else if (key === 'lens_correction') {
      if (!isObject(value)) throw new Error(`lens_correction is an object like {"f1": 48, "f1_rshift_count": 24}, not ${shown(value)}.`);
      s.lens = Object.fromEntries(s.lensNumbers.map((n) => [n.key, n.standard]));
      for (const [name, one] of Object.entries(value)) {
        const known = s.lensNumbers.find((n) => n.key === name);
        if (known) {
          s.lens[name] = number(name, one, known.low, known.high);
        } else if (name === 'origin') {
          if (!Array.isArray(one) || one.length !== 2) throw new Error(`origin takes column and row in brackets, not ${shown(one)}.`);
          s.lens.origin = one.map((v) => number('origin', v, 0, 16384));
        } else {
          throw new Error(`There is no ${shown(name)} in lens_correction.`);
        }
      }
    } else if (!control) {
      throw new Error(`There is no control ${shown(key)}.`);
    } else if (control.kind === 'flag') {
      if (typeof value !== 'boolean') throw new Error(`${key} is true or false, not ${shown(value)}.`);
      s.set(key, [value ? 1 : 0]);
    } else if (control.kind === 'number') {
      s.set(key, [number(key, value, control.low, control.high)]);
    } else {
      if (!Array.isArray(value) || value.length !== control.count)
        throw new Error(`${key} takes ${control.count} whole numbers in brackets, not ${shown(value)}.`);
      s.set(key, value.map((v) => number(key, v, control.low, control.high)));
    }
  }
  for (const { key, value } of s.given)
    if (key.endsWith('_min_max') && value[0] > value[1])
      throw new Error(`The minimum of ${key} must not be above the maximum, not ${shown(value)}.`);
  return s;
}
