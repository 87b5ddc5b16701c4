// The elements of the page.

export const byId = (id) => document.getElementById(id);
