"use strict";

// Sorts the table by the column whose heading is used, ascending first.
const table = document.querySelector("#figures table");
const headings = [...table.tHead.rows[0].cells];

function valueOf(row, column) {
    const cell = row.cells[column];
    return cell.dataset.value ?? cell.textContent;
}

function compare(a, b, numeric) {
    if (!numeric)
        return a.localeCompare(b);
    // Infinity less infinity is no number.
    return a === b ? 0 : Number(a) - Number(b);
}

function sortBy(column) {
    const heading = headings[column];
    const ascending = heading.getAttribute("aria-sort") !== "ascending";
    const numeric = heading.classList.contains("number");
    const rows = [...table.tBodies[0].rows];
    rows.sort((a, b) => (ascending ? 1 : -1) * compare(valueOf(a, column), valueOf(b, column), numeric));
    table.tBodies[0].append(...rows);
    headings.forEach(other => other.removeAttribute("aria-sort"));
    heading.setAttribute("aria-sort", ascending ? "ascending" : "descending");
}

headings.forEach((heading, column) =>
    heading.querySelector("button").addEventListener("click", () => sortBy(column)));

// A link to a run opens its pictures.
function openTarget() {
    const target = document.getElementById(decodeURIComponent(location.hash.slice(1)));
    if (target instanceof HTMLDetailsElement) {
        target.open = true;
        target.scrollIntoView();
    }
}

window.addEventListener("hashchange", openTarget);
openTarget();
