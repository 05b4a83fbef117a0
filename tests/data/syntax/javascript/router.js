#!/usr/bin/env node
// router.js - a tiny path router with parameters, wildcards and middleware.
'use strict';

import { createServer } from 'node:http';
import { readFile } from "node:fs/promises";
import * as path from 'node:path';

const DEFAULT_PORT = 8080;
const PARAM = /:([A-Za-z_$][\w$]*)(\?)?/g;
const TRAILING_SLASHES = /\/+$/;
const ESCAPE = /[.*+?^${}()|[\]\\]/g;
const CONTENT_TYPES = new Map([
  ['.html', 'text/html; charset=utf-8'],
  ['.css', "text/css"],
  ['.js', 'text/javascript'],
  [".json", 'application/json'],
]);
const LIMITS = { bytes: 1_048_576, hex: 0xff_ff, octal: 0o644, binary: 0b1010, big: 9007199254740993n, ratio: .75, tiny: 1e-9 };

/**
 * Compiles a route pattern such as "/users/:id/files/*" into a matcher.
 *
 * @param {string} pattern the route, with :name parameters and a trailing *
 * @returns {{ regex: RegExp, keys: string[] }}
 */
export function compile(pattern) {
  const keys = [];
  let source = pattern.replace(TRAILING_SLASHES, '') || '/';
  source = source
    .split('/')
    .map((segment) => {
      if (segment === '*') {
        keys.push('wildcard');
        return '(.*)';
      }
      return segment.replace(ESCAPE, (c) => (c === ':' ? c : `\\${c}`)).replace(PARAM, (_, name, optional) => {
        keys.push(name);
        return optional ? '([^/]*)' : '([^/]+)';
      });
    })
    .join('\\/');
  return { regex: new RegExp(`^${source}\\/?$`, 'i'), keys };
}

export class Router {
  #routes = [];
  #middleware = [];
  static methods = ['GET', 'POST', 'PUT', 'DELETE'];

  constructor({ prefix = '', notFound } = {}) {
    this.prefix = prefix;
    this.notFound = notFound ?? ((req, res) => this.send(res, 404, { error: `no route for ${req.method} ${req.url}` }));
  }

  use(fn) {
    if (typeof fn !== 'function') throw new TypeError("middleware must be a function, got " + typeof fn);
    this.#middleware.push(fn);
    return this;
  }

  add(method, pattern, ...handlers) {
    const { regex, keys } = compile(this.prefix + pattern);
    this.#routes.push({ method: method.toUpperCase(), regex, keys, handlers });
    return this;
  }

  get(pattern, ...handlers) {
    return this.add('GET', pattern, ...handlers);
  }

  match(method, url) {
    const pathname = new URL(url, 'http://localhost').pathname;
    for (const route of this.#routes) {
      if (route.method !== method && route.method !== 'ALL') continue;
      const found = route.regex.exec(pathname);
      if (!found) continue;
      const params = Object.fromEntries(route.keys.map((key, i) => [key, decodeURIComponent(found[i + 1] ?? '')]));
      return { route, params };
    }
    return null;
  }

  async handle(req, res) {
    const chain = [...this.#middleware];
    const hit = this.match(req.method, req.url);
    if (hit) {
      req.params = hit.params;
      chain.push(...hit.route.handlers);
    } else {
      chain.push(this.notFound);
    }
    let index = 0;
    const next = async (error) => {
      if (error) return this.send(res, 500, { error: String(error?.message ?? error) });
      const fn = chain[index++];
      if (fn) await fn(req, res, next);
    };
    await next();
  }

  send(res, status, body, type = 'application/json') {
    const text = typeof body === 'string' ? body : JSON.stringify(body, null, 2);
    res.writeHead(status, { 'content-type': type, 'content-length': Buffer.byteLength(text) });
    res.end(text);
  }
}

const logger = async (req, res, next) => {
  const started = performance.now();
  await next();
  const ms = (performance.now() - started).toFixed(1);
  console.log(`${new Date().toISOString()} ${req.method} ${req.url} -> ${res.statusCode} (${ms} ms)`);
};

const html = (strings, ...values) =>
  strings.reduce((out, s, i) => out + s + (i < values.length ? escapeHtml(values[i]) : ''), '');

function escapeHtml(value) {
  return String(value).replace(/[&<>"']/g, (c) => ({ '&': '&amp;', '<': '&lt;', '>': '&gt;', '"': '&quot;', "'": '&#39;' })[c]);
}

function* chunks(text, size = 4) {
  for (let i = 0; i < text.length; i += size) yield text.slice(i, i + size);
}

async function serveStatic(root) {
  return async function staticHandler(req, res, next) {
    const file = path.join(root, req.params.wildcard || 'index.html');
    if (!file.startsWith(root)) return next(new Error('outside the root'));
    try {
      const data = await readFile(file);
      res.writeHead(200, { 'content-type': CONTENT_TYPES.get(path.extname(file)) || 'application/octet-stream' });
      res.end(data);
    } catch (err) {
      if (err.code === 'ENOENT') return next();
      throw err;
    }
  };
}

const router = new Router({ prefix: '/api' });
router
  .use(logger)
  .get('/health', (req, res) => router.send(res, 200, { ok: true, uptime: process.uptime() }))
  .get('/users/:id/:tab?', (req, res) => {
    const { id, tab = 'profile' } = req.params;
    const page = html`<h1 class="user">User ${id}</h1>
<p>Showing the ${tab} tab; nested: ${`inner ${tab.length > 3 ? 'long' : "short"} text`}</p>`;
    router.send(res, 200, page, 'text/html');
  })
  .add('ALL', '/echo/*', (req, res) => {
    const total = LIMITS.bytes / 2 + LIMITS.hex * 3 - LIMITS.octal % 7;
    const ratio = total / LIMITS.ratio / 2;
    const parts = [...chunks(req.params.wildcard ?? '')];
    router.send(res, 200, { parts, ratio, big: LIMITS.big.toString(), tiny: LIMITS.tiny });
  });

const server = createServer((req, res) => {
  router.handle(req, res).catch((error) => {
    console.error('unhandled:', error);
    if (!res.headersSent) router.send(res, 500, { error: 'internal error' });
  });
});

const port = Number.parseInt(process.env.PORT ?? '', 10) || DEFAULT_PORT;
server.listen(port, () => {
  console.log('listening on http://localhost:%d/api (escape test: \u2713 \x41 \n)', port);
});

export default router;
