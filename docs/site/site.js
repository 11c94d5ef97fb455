"use strict";

// The page of the navigation that is shown.
const here = location.pathname.split("/").pop() || "index.html";
for (const link of document.querySelectorAll("#nav a"))
    if (link.getAttribute("href") === here)
        link.setAttribute("aria-current", "page");

const menu = document.getElementById("menu");
menu.addEventListener("click", () => {
    menu.setAttribute("aria-expanded", document.body.classList.toggle("menu"));
});

// What is on this page, at the other side.
const places = [...document.querySelectorAll("main .contents h2, main .contents h1")]
    .map(heading => [heading.querySelector("a[id]")?.id || heading.previousElementSibling?.id,
        heading.textContent.replace("\u25c6", "").replace(/\[.*/, "").trim(), heading.className])
    .filter(([id, text]) => id && text);
if (places.length > 2) {
    const list = document.createElement("ul");
    const seen = new Set();
    for (const [id, text, kind] of places) {
        if (seen.has(text))
            continue;
        seen.add(text);
        const link = document.createElement("a");
        link.href = "#" + id;
        link.textContent = text;
        const item = document.createElement("li");
        item.className = kind;
        item.append(link);
        list.append(item);
    }
    const title = document.createElement("h2");
    title.textContent = "On this page";
    document.getElementById("here").append(title, list);
}

// The search. Its index is a script, since a page of the file system may read no other file.
const form = document.getElementById("search");
const input = form.querySelector("input");
const results = document.getElementById("results");

// The places that have all words of a query, the likeliest first. An index has [url, title, page, text] for each.
function search(index, query) {
    const wanted = query.toLowerCase().trim().replace(/\s+/g, " ");
    const words = wanted.split(" ").filter(word => word);
    if (words.length === 0)
        return [];
    const found = [];
    for (const [url, title, page, text] of index) {
        const name = title.toLowerCase();
        const all = (title + " " + page + " " + text).toLowerCase();
        if (!words.every(word => all.includes(word)))
            continue;
        let rank = 0;
        if (name === wanted)
            rank += 100;
        else if (name.startsWith(wanted))
            rank += 50;
        else if (name.includes(wanted))
            rank += 30;
        rank += 8 * words.filter(word => name.includes(word)).length;
        rank += 4 * words.filter(word => page.toLowerCase().includes(word)).length;
        if (all.includes(wanted))
            rank += 6;
        if (!url.includes("#"))
            rank += 3;
        if (!/^(class|struct|group__|namespace)|_8h/.test(url))
            rank += 3;
        found.push({url, title, page, text, rank});
    }
    return found.sort((a, b) => b.rank - a.rank).slice(0, 20);
}

// The text around the first word that was looked for.
function excerpt(text, query) {
    const words = query.toLowerCase().trim().split(/\s+/);
    const lower = text.toLowerCase();
    const place = [query.toLowerCase().trim(), ...words].map(word => lower.indexOf(word)).find(at => at >= 0) ?? 0;
    const start = place < 50 ? 0 : text.indexOf(" ", place - 45) + 1;
    return (start > 0 ? "\u2026 " : "") + text.slice(start, start + 150) + (text.length > start + 150 ? "\u2026" : "");
}

function show() {
    results.replaceChildren();
    results.hidden = input.value.trim() === "";
    if (results.hidden || typeof searchIndex === "undefined")
        return;
    const found = search(searchIndex, input.value);
    for (const place of found) {
        const link = document.createElement("a");
        link.href = place.url;
        const title = document.createElement("b");
        title.textContent = place.title;
        const page = document.createElement("span");
        page.textContent = place.page === place.title ? "" : place.page;
        const text = document.createElement("p");
        text.textContent = excerpt(place.text, input.value);
        link.append(title, " ", page, text);
        const item = document.createElement("li");
        item.append(link);
        results.append(item);
    }
    if (found.length === 0) {
        const item = document.createElement("li");
        item.textContent = "Nothing has all of these words.";
        results.append(item);
    }
}

function load() {
    if (document.getElementById("search-index"))
        return;
    const script = document.createElement("script");
    script.id = "search-index";
    script.src = "search-index.js";
    script.addEventListener("load", show);
    document.head.append(script);
}

input.addEventListener("focus", load);
input.addEventListener("input", () => { load(); show(); });
form.addEventListener("submit", event => {
    event.preventDefault();
    results.querySelector("a")?.click();
});
form.addEventListener("keydown", event => {
    if (event.key === "Escape") {
        input.value = "";
        show();
    }
    if (event.key !== "ArrowDown" && event.key !== "ArrowUp")
        return;
    event.preventDefault();
    const stops = [input, ...results.querySelectorAll("a")];
    const next = stops.indexOf(document.activeElement) + (event.key === "ArrowDown" ? 1 : -1);
    stops[(next + stops.length) % stops.length].focus();
});
document.addEventListener("keydown", event => {
    if (event.key === "/" && document.activeElement !== input) {
        event.preventDefault();
        input.focus();
    }
});
document.addEventListener("click", event => {
    if (!form.contains(event.target) || event.target.closest("a"))
        results.hidden = true;
});

// A link may carry a query: index.html?q=settings.
const query = new URLSearchParams(location.search).get("q");
if (query) {
    input.value = query;
    load();
}
