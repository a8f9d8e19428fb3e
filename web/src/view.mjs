// The picture: zoom, the divider between before and after, the loupe. Canvases show pixels; numbers stand in elements.

export class View {
  #zoom = 0; // 0: as large as fits, by whole numbers
  #divider = 0.5;
  #colour = () => [0, 0, 0]; // of a pixel that is shown
  #at = null; // the place under the loupe, in pixels of the picture

  /** @param parts elements: stage, paper, canvas, divider, cross, loupe, loupeText; look(x, y) -> what stands there; pick(x, y) */
  constructor(parts, { look, pick, moved }) {
    Object.assign(this, parts);
    this.context = this.canvas.getContext('2d', { alpha: false });
    this.loupeContext = this.loupe.getContext('2d', { alpha: false });
    this.look = look;
    this.moved = moved;
    this.comparing = false;
    const point = (event) => {
      const box = this.canvas.getBoundingClientRect();
      return [Math.floor((event.clientX - box.left) / box.width * this.canvas.width),
        Math.floor((event.clientY - box.top) / box.height * this.canvas.height)];
    };
    this.canvas.addEventListener('pointermove', (event) => this.#move(...point(event)));
    this.canvas.addEventListener('click', (event) => {
      this.#move(...point(event));
      pick(...this.#at);
    });
    this.stage.addEventListener('keydown', (event) => {
      if (event.target !== this.stage) return;
      const far = event.shiftKey ? 32 : 2;
      const [x, y] = this.#at ?? [this.canvas.width >> 1, this.canvas.height >> 1];
      const to = { ArrowLeft: [x - far, y], ArrowRight: [x + far, y], ArrowUp: [x, y - far], ArrowDown: [x, y + far] }[event.key];
      if (to) {
        this.#move(...to);
        this.cross.scrollIntoView({ block: 'nearest', inline: 'nearest' });
        moved('loupe');
      } else if (event.key === 'Enter' || event.key === ' ') pick(x, y);
      else if (event.key === '+') this.zoomBy(1);
      else if (event.key === '-') this.zoomBy(-1);
      else if (event.key === '0') this.zoom = 0;
      else return;
      event.preventDefault();
    });
    this.divider.addEventListener('keydown', (event) => {
      const step = event.shiftKey ? 0.1 : 0.01;
      const to = { ArrowLeft: this.#divider - step, ArrowDown: this.#divider - step, ArrowRight: this.#divider + step,
        ArrowUp: this.#divider + step, Home: 0, End: 1 }[event.key];
      if (to === undefined) return;
      event.preventDefault();
      this.dividerAt = to;
    });
    this.divider.addEventListener('pointerdown', (event) => {
      this.divider.setPointerCapture(event.pointerId);
      event.preventDefault();
      this.divider.focus();
    });
    this.divider.addEventListener('pointermove', (event) => {
      if (!this.divider.hasPointerCapture(event.pointerId)) return;
      const box = this.canvas.getBoundingClientRect();
      this.dividerAt = (event.clientX - box.left) / box.width;
    });
    new ResizeObserver(() => this.#layout()).observe(this.stage);
  }

  get at() {
    return this.#at;
  }
  get dividerAt() {
    return this.#divider;
  }
  set dividerAt(at) {
    this.#divider = Math.min(1, Math.max(0, at));
    this.divider.style.left = `${this.#divider * 100}%`;
    this.divider.setAttribute('aria-valuenow', String(Math.round(this.#divider * 100)));
    this.moved();
  }
  get zoom() {
    return this.#zoom;
  }
  set zoom(zoom) {
    this.#zoom = zoom;
    this.#layout();
    if (!this.#at) return;
    // What the loupe is on stays in sight.
    const [x, y] = this.#at.map((v) => (v + 0.5) * this.scale);
    this.stage.scrollTo(x - this.stage.clientWidth / 2, y - this.stage.clientHeight / 2);
  }
  zoomBy(direction) {
    const steps = [0.25, 0.5, 1, 2, 4, 8], now = this.scale;
    const next = direction > 0 ? steps.find((s) => s > now * 1.01) : steps.findLast((s) => s < now * 0.99);
    if (next) this.zoom = next;
  }
  get scale() {
    return this.#zoom || this.#fit();
  }
  #fit() {
    const style = getComputedStyle(this.stage);
    const room = this.stage.clientWidth - parseFloat(style.paddingLeft) - parseFloat(style.paddingRight);
    const high = this.stage.clientHeight - parseFloat(style.paddingTop) - parseFloat(style.paddingBottom);
    const most = Math.max(0.01, Math.min(room / this.canvas.width, high / this.canvas.height));
    return most < 1 ? most : Math.floor(most); // a pixel enlarged is a square, never a blur
  }
  #layout() {
    const scale = this.scale;
    this.paper.style.width = `${Math.floor(this.canvas.width * scale)}px`;
    this.paper.style.height = `${Math.floor(this.canvas.height * scale)}px`;
    this.canvas.classList.toggle('sharp', scale >= 2);
    this.#placeCross();
    this.moved('size');
  }

  /** Shows pixels, and others left of the divider if there are any. */
  show(pixels, width, height, before) {
    if (this.canvas.width !== width || this.canvas.height !== height) {
      this.canvas.width = width;
      this.canvas.height = height;
      this.#at = [width >> 1, height >> 1];
      this.#layout();
    }
    const edge = before ? Math.round(this.#divider * width) : 0;
    const after = new ImageData(pixels, width, height);
    this.#colour = (x, y) => {
      const from = x < edge ? before.data : pixels, i = 4 * (y * width + x);
      return from.length > i ? [from[i], from[i + 1], from[i + 2]] : [0, 0, 0];
    };
    if (edge < width) this.context.putImageData(after, 0, 0, edge, 0, width - edge, height);
    if (before && edge > 0) this.context.putImageData(before, 0, 0, 0, 0, edge, height);
    this.divider.hidden = !before;
    this.#at ??= [width >> 1, height >> 1];
    this.#placeCross();
    this.#magnify();
  }

  #move(x, y) {
    this.#at = [Math.min(this.canvas.width - 1, Math.max(0, x)), Math.min(this.canvas.height - 1, Math.max(0, y))];
    this.#placeCross();
    this.#magnify();
  }
  #placeCross() {
    this.cross.hidden = !this.#at;
    if (!this.#at) return;
    this.cross.style.left = `${(this.#at[0] + 0.5) / this.canvas.width * 100}%`;
    this.cross.style.top = `${(this.#at[1] + 0.5) / this.canvas.height * 100}%`;
  }
  // A square of the picture round the place, each pixel large.
  #magnify() {
    const [x, y] = this.#at, n = 15, half = n >> 1, to = this.loupeContext, size = this.loupe.width;
    to.imageSmoothingEnabled = false;
    to.fillStyle = '#808080';
    to.fillRect(0, 0, size, size);
    const left = x - half, top = y - half;
    const x0 = Math.max(0, left), y0 = Math.max(0, top);
    const x1 = Math.min(this.canvas.width, left + n), y1 = Math.min(this.canvas.height, top + n), cell = size / n;
    to.drawImage(this.canvas, x0, y0, x1 - x0, y1 - y0, (x0 - left) * cell, (y0 - top) * cell, (x1 - x0) * cell, (y1 - y0) * cell);
    to.strokeStyle = '#fff';
    to.lineWidth = 1;
    to.strokeRect(half * cell - 0.5, half * cell - 0.5, cell + 1, cell + 1);
    to.strokeStyle = '#000';
    to.strokeRect(half * cell - 1.5, half * cell - 1.5, cell + 3, cell + 3);
    this.look(x, y, this.#colour(x, y));
  }
}
